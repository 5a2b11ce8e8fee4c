// A cart's audio in the editor: real programs, small shell scripts that do to the file what an editor does.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>

#include "carts/Orvane_Audio_Routines.h"
#include "config/Vorda_Common_API.h"
#include "platform/FileFault.h"
#include "platform/MessageBox.h"
#include "platform/Process.h"
#include "platform/Settings.h"
#include "support/WallFixture.h"

namespace vorda {
namespace {

using platform::BoxIcon;
using platform::FileOperation;
using platform::ScopedFileFault;
using test::BlankCartRecord;
using test::FullCartRecord;
using test::Wave;

constexpr test::WaveHeader kMono{1, 1, 8000, 16000, 2, 16};

class CartAudioEditTest : public test::WallFixture {
 protected:
  CartAudioEditTest() {
    gWireFeeds = {};
    gWireFeeds[0].RecordFormat = {1, 2, 22050, 88200, 4, 16};
  }
  ~CartAudioEditTest() override {
    gWireFeeds = {};
    gAudioEditor.clear();
    EXPECT_EQ(platform::RunningProcessCount(), 0) << "an editor that was not waited for";
  }

  // An editor that runs the shell's `commands`; the audio is "$1". What it was started with is in seen_.
  void UseEditor(const std::string& commands) {
    gAudioEditor = tools_ / "the editor";
    test::WriteWholeFile(gAudioEditor,
                         "#!/bin/sh\nprintf '%s\\n' \"$@\" >'" + seen_ + "'\n" + commands + "\n");
    std::filesystem::permissions(gAudioEditor, std::filesystem::perms::owner_all);
  }
  // One that leaves these bytes in the file.
  void UseEditorThatLeaves(std::string_view bytes) {
    test::WriteWholeFile(tools_ / "result", bytes);
    UseEditor("cat '" + (tools_ / "result") + "' >\"$1\"");
  }
  // A sound of so many seconds.
  static std::string Sound(double seconds) { return Wave(kMono, static_cast<std::size_t>(seconds * 16000)); }
  void GiveAudio(const std::string& bytes) { test::WriteWholeFile(audio_, bytes); }

  bool EditorRan() const { return std::filesystem::exists(seen_); }
  static CartInfo Record() {
    CartInfo info;
    EXPECT_EQ(ReadCartInfo(info, 7), 0);
    return info;
  }

  test::TempDirectory tools_;
  const std::string seen_ = tools_ / "seen";
  const std::string audio_ = wall_ / "ORV00007.WAV";
};

TEST_F(CartAudioEditTest, CartZeroIsToldThatANumberIsMissing) {
  UseEditor("");
  boxes_.Expect("You must specify a cart number first");
  EditCartAudio(0);
  EXPECT_EQ(boxes_.Last().buttons, platform::BoxButtons::Ok);
  EXPECT_FALSE(EditorRan());
  gAudioEditor.clear();
  boxes_.Expect("You must specify a cart number first");
  EditCartAudio(0);
  EXPECT_EQ(FilesIn(wall_.path()), Names());
}

TEST_F(CartAudioEditTest, WithoutAnEditorNothingHappens) {
  for (const char* none : {"", "   "}) {
    gAudioEditor = none;
    EditCartAudio(7);
  }
  EXPECT_EQ(FilesIn(wall_.path()), Names());
}

TEST_F(CartAudioEditTest, EditorThatIsNotThereIsTold) {
  InstallRule([](std::int32_t) { return false; });
  for (const std::string& editor : {tools_ / "none", tools_.path(), std::string("Q:\\EDIT\\EDIT.EXE")}) {
    gAudioEditor = editor;
    boxes_.Expect("You must an Audio Editor in Audio Setup in Orvane Configuration");
    EditCartAudio(7);
    EXPECT_EQ(boxes_.Last().title, "Cannot Run Audio Editor");
    EXPECT_EQ(boxes_.Last().icon, BoxIcon::Critical);
    EXPECT_EQ(boxes_.Last().buttons, platform::BoxButtons::Ok);
  }
  EXPECT_EQ(FilesIn(wall_.path()), Names());
}

TEST_F(CartAudioEditTest, OperatorWithoutTheRightGetsNoEditorAndNoWord) {
  UseEditor("");
  InstallRule([](std::int32_t cart) { return cart != 7; });
  EditCartAudio(7);
  EXPECT_FALSE(EditorRan());
  EXPECT_EQ(FilesIn(wall_.path()), Names());
}

TEST_F(CartAudioEditTest, EditorIsStartedOnTheAudioAndWaitedFor) {
  GiveAudio(Sound(2));
  UseEditorThatLeaves(Sound(3));
  EditCartAudio(7);
  EXPECT_EQ(test::ReadWholeFile(seen_), audio_ + "\n");
  EXPECT_EQ(test::ReadWholeFile(audio_), Sound(3));
  EXPECT_EQ(Record().AudioLength, 3);
}

TEST_F(CartAudioEditTest, BlankInTheAudiosPathStaysOneArgument) {
  const std::string directory = far_ / "our audio wall";
  std::filesystem::create_directory(directory);
  MovePart(1, directory);
  UseEditorThatLeaves(Sound(3));
  EditCartAudio(7);
  EXPECT_EQ(test::ReadWholeFile(seen_), directory + "/ORV00007.WAV\n");
  EXPECT_EQ(Record().AudioLength, 3);
}

TEST_F(CartAudioEditTest, EditorGetsAPathThatItCanOpen) {
  platform::Settings settings;
  settings.drives['D'] = wall_.path();
  const platform::ScopedSettings scoped(settings);
  GiveAudio(Sound(2));
  MovePart(1, "D:");
  UseEditorThatLeaves(Sound(3));
  EditCartAudio(7);
  EXPECT_EQ(test::ReadWholeFile(seen_), audio_ + "\n");
  EXPECT_EQ(Record().AudioLength, 3);
}

TEST_F(CartAudioEditTest, LinkedAudioIsWhatIsEdited) {
  AllowLinks();
  const std::string linked = far_ / "song.wav";
  test::WriteWholeFile(linked, Sound(2));
  test::WriteWholeFile(CartFile(7, "FLK"), linked + "\r\n");
  UseEditorThatLeaves(Sound(3));
  EditCartAudio(7);
  EXPECT_EQ(test::ReadWholeFile(seen_), linked + "\n");
  EXPECT_EQ(test::ReadWholeFile(linked), Sound(3));
  EXPECT_EQ(Record().AudioLength, 3);
  EXPECT_EQ(FilesIn(wall_.path()), Names({"ORV00007.FLK"}));
}

TEST_F(CartAudioEditTest, MissingOrEmptyAudioIsMadeInTheFirstFeedsFormat) {
  using namespace std::string_view_literals;
  for (const bool empty : {false, true}) {
    if (empty) GiveAudio("");
    UseEditor("cat \"$1\" >'" + (tools_ / "found") + "'");
    EditCartAudio(7);
    EXPECT_EQ(test::ReadWholeFile(tools_ / "found"),
              "RIFF\x2E\x00\x00\x00WAVE"
              "fmt \x10\x00\x00\x00\x01\x00\x02\x00\x22\x56\x00\x00\x88\x58\x01\x00\x04\x00\x10\x00"
              "data\x0A\x00\x00\x00"sv);
    EXPECT_FALSE(std::filesystem::exists(audio_)) << "nothing was recorded into it";
    std::filesystem::remove(tools_ / "found");
  }
  EXPECT_EQ(RecordBytes(7), BlankCartRecord());
}

TEST_F(CartAudioEditTest, AudioThatIsThereIsLeftToTheEditor) {
  GiveAudio(Sound(2));
  SetRecordBytes(7, FullCartRecord("Title", 2));
  UseEditor("");
  EditCartAudio(7);
  EXPECT_EQ(test::ReadWholeFile(audio_), Sound(2));
  EXPECT_EQ(RecordBytes(7), FullCartRecord("Title", 2));
}

TEST_F(CartAudioEditTest, AudioThatCannotBeMadeIsToldAndTheEditorStartedAllTheSame) {
  MovePart(1, wall_ / "none");
  UseEditor("");
  const std::string audio = wall_ / "none/ORV00007.WAV";
  boxes_.Expect("Error Creating Cart : " + audio);
  EditCartAudio(7);
  EXPECT_EQ(test::ReadWholeFile(seen_), audio + "\n");
}

TEST_F(CartAudioEditTest, EmptyCartGetsALengthAndNoTitle) {
  UseEditorThatLeaves(Sound(2.5));
  EditCartAudio(7);
  std::string expected = BlankCartRecord();
  for (const std::size_t place : {test::kAudioLengthAt, test::kPlayEndAt, test::kPlayLengthAt})
    test::PutFloat(expected, place, 2.5F);
  EXPECT_EQ(RecordBytes(7), expected);
}

// A record in which all that an edit may not touch is filled.
std::string FilledRecord() {
  std::string record = FullCartRecord("", 60);
  record.replace(0, 262, std::string(262, 'k'));
  record.replace(290, 10, std::string(10, 'k'));
  test::PutFloat(record, test::kMarkStartAt, 40);
  test::PutFloat(record, test::kMarkEndAt, 50);
  test::PutFloat(record, test::kCountdownMarkAt, 45);
  test::PutFloat(record, test::kPlayStartAt, 5);
  test::PutFloat(record, test::kPlayEndAt, 55);
  test::PutFloat(record, test::kPlayLengthAt, 50);
  return record;
}

TEST_F(CartAudioEditTest, ShorterAudioCutsTheCountdownAndLeavesTheMarks) {
  GiveAudio(Sound(2));
  SetRecordBytes(7, FilledRecord());
  UseEditorThatLeaves(Sound(30));
  EditCartAudio(7);
  std::string expected = FilledRecord();
  test::PutFloat(expected, test::kPlayStartAt, 0);
  for (const std::size_t place :
       {test::kCountdownMarkAt, test::kAudioLengthAt, test::kPlayEndAt, test::kPlayLengthAt})
    test::PutFloat(expected, place, 30);
  EXPECT_EQ(RecordBytes(7), expected) << "the end of the marks lies behind the audio now";
}

TEST_F(CartAudioEditTest, LongerAudioLeavesTheCountdown) {
  GiveAudio(Sound(2));
  SetRecordBytes(7, FilledRecord());
  UseEditorThatLeaves(Sound(90));
  EditCartAudio(7);
  std::string expected = FilledRecord();
  test::PutFloat(expected, test::kPlayStartAt, 0);
  for (const std::size_t place : {test::kAudioLengthAt, test::kPlayEndAt, test::kPlayLengthAt})
    test::PutFloat(expected, place, 90);
  EXPECT_EQ(RecordBytes(7), expected);
}

TEST_F(CartAudioEditTest, FirstMarkIsCutDownToTheSecond) {
  std::string record = FilledRecord();
  test::PutFloat(record, test::kMarkStartAt, 51);
  SetRecordBytes(7, record);
  UseEditorThatLeaves(Sound(90));
  EditCartAudio(7);
  EXPECT_EQ(Record().MarkStart, 50);
  EXPECT_EQ(Record().MarkEnd, 50);
}

TEST_F(CartAudioEditTest, AudioOfUpToAHundredBytesIsDeletedAndTheRecordLeft) {
  SetRecordBytes(7, FilledRecord());
  const std::string hundred = Wave(kMono, 56);
  ASSERT_EQ(hundred.size(), 100U);
  for (const std::string& left : {std::string(), std::string("x"), hundred}) {
    GiveAudio(Sound(2));
    UseEditorThatLeaves(left);
    EditCartAudio(7);
    EXPECT_FALSE(std::filesystem::exists(audio_)) << left.size();
    EXPECT_EQ(RecordBytes(7), FilledRecord()) << left.size();
  }
}

TEST_F(CartAudioEditTest, AudioOfAHundredAndOneBytesStays) {
  GiveAudio(Sound(2));
  const std::string left = Wave(kMono, 56) + "x";
  UseEditorThatLeaves(left);
  EditCartAudio(7);
  EXPECT_EQ(test::ReadWholeFile(audio_), left);
  EXPECT_EQ(Record().AudioLength, 0.003F) << "28 samples of 8000 a second";
}

TEST_F(CartAudioEditTest, AudioThatTheEditorTookAwayLeavesTheRecord) {
  GiveAudio(Sound(2));
  SetRecordBytes(7, FilledRecord());
  UseEditor("rm \"$1\"");
  EditCartAudio(7);
  EXPECT_EQ(RecordBytes(7), FilledRecord());
}

TEST_F(CartAudioEditTest, AudioWithoutLengthLeavesTheRecord) {
  GiveAudio(Sound(2));
  SetRecordBytes(7, FilledRecord());
  // A wave that is long enough to stay, with nothing to hear in it.
  const std::string silent = test::Riff(test::FormatChunk(kMono) +
                                        test::Chunk("LIST", std::string(100, 'l')) + test::Chunk("data", ""));
  UseEditorThatLeaves(silent);
  EditCartAudio(7);
  EXPECT_EQ(test::ReadWholeFile(audio_), silent);
  EXPECT_EQ(RecordBytes(7), FilledRecord());
}

TEST_F(CartAudioEditTest, EmptyAudioThatCannotBeDeletedIsTold) {
  GiveAudio(Sound(2));
  SetRecordBytes(7, FilledRecord());
  UseEditorThatLeaves(test::Riff(test::FormatChunk(kMono)));
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00007.WAV");
  boxes_.Expect("Error Clearing Empty Audio from Cart : 7");
  EditCartAudio(7);
  EXPECT_EQ(fault.calls(), 1);
  EXPECT_EQ(boxes_.Last().title, "Cart Error : Permission denied");
  EXPECT_TRUE(std::filesystem::exists(audio_));
  EXPECT_EQ(RecordBytes(7), FilledRecord());
}

// What could not be deleted is looked at like any other audio.
TEST_F(CartAudioEditTest, ShortAudioThatCannotBeDeletedGivesItsLength) {
  GiveAudio(Sound(2));
  UseEditorThatLeaves(Wave(kMono, 32));
  const ScopedFileFault fault(FileOperation::Remove, EBUSY, 1, 1, "ORV00007.WAV");
  boxes_.Expect("Error Clearing Empty Audio from Cart : 7");
  EditCartAudio(7);
  EXPECT_EQ(boxes_.Last().title, "Cart Error : File already open");
  EXPECT_EQ(Record().AudioLength, 0.002F);
}

TEST_F(CartAudioEditTest, RecordIsWrittenToBothStores) {
  UseIndividualFiles();
  UseEditorThatLeaves(Sound(3));
  EditCartAudio(7);
  EXPECT_EQ(test::ReadWholeFile(CartFile(7, "LST")), RecordBytes(7));
  EXPECT_EQ(Record().AudioLength, 3);
}

TEST_F(CartAudioEditTest, AudioThatIsNoWaveIsToldAheadOfTheEditorAndBehindIt) {
  constexpr const char* kNoSound =
      "The specified file cannot be played on the specified MCI device. The file may be corrupt, or not in "
      "the correct format.";
  GiveAudio(std::string(200, 'x'));
  SetRecordBytes(7, FilledRecord());
  UseEditor("");
  boxes_.Expect(kNoSound, platform::BoxAnswer::Cancel, [this] { EXPECT_FALSE(EditorRan()); });
  boxes_.Expect(kNoSound, platform::BoxAnswer::Cancel, [this] { EXPECT_TRUE(EditorRan()); });
  EditCartAudio(7);
  EXPECT_EQ(RecordBytes(7), FilledRecord());
}

// The record is the one from ahead of the edit: what another station wrote meanwhile is written over.
TEST_F(CartAudioEditTest, RecordIsReadAheadOfTheEdit) {
  SetRecordBytes(7, FullCartRecord("Before", 60));
  test::WriteWholeFile(tools_ / "list", std::string(6 * 300, '\0') + FullCartRecord("Meanwhile", 60));
  test::WriteWholeFile(tools_ / "result", Sound(3));
  UseEditor("cat '" + (tools_ / "result") + "' >\"$1\"\ncat '" + (tools_ / "list") + "' >'" + ListFileOf(7) +
            "'");
  EditCartAudio(7);
  EXPECT_EQ(RecordBytes(7).substr(0, 6), "Before");
}

TEST_F(CartAudioEditTest, LengthIsTakenOverThoughTheEditorCouldNotBeStarted) {
  GiveAudio(Sound(2));
  SetRecordBytes(7, FilledRecord());
  UseEditor("");
  test::FakeProcesses processes;
  processes.canStart = false;
  EditCartAudio(7);
  EXPECT_FALSE(processes.started.empty());
  EXPECT_EQ(Record().AudioLength, 2);
}

}  // namespace
}  // namespace vorda
