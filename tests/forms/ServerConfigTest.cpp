// The server INI: which feeds it makes, where they stand, and how its name comes out of the command line.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "platform/ScopedVariable.h"
#include "support/FeedWindows.h"

namespace vorda::test {
namespace {

using platform::BoxIcon;

constexpr const char* kUsage =
    "Invalid .INI file in command line\nCorrect form : vdserver[.exe] [IniFileName]";
constexpr const char* kPickerTitle = "Select Primary News Feed Directory";

class ServerConfig : public FeedWindows {
 protected:
  ServerConfig() { CommandLine({}); }
  ~ServerConfig() override { gCommandLine.clear(); }

  static void CommandLine(const std::vector<const char*>& arguments) {
    TakeCommandLine(static_cast<int>(arguments.size()), arguments.data());
  }
  // A news directory with a feed configuration file in it.
  std::string NewsDirectory(int number) {
    std::string path = directory / ("news" + std::to_string(number));
    std::filesystem::create_directory(path);
    WriteWholeFile(path + "/vorda.ini", "[General]\r\nName=Wire " + std::to_string(number) + "\r\n");
    return path;
  }
  std::string Section(int number, const std::string& more = {}) {
    return "[WireFeed" + std::to_string(number) + "]\r\nNewsPath=" + NewsDirectory(number) + "\r\n" + more;
  }
  void WriteIni(const std::string& text, const std::string& name = "vdServer.INI") {
    WriteWholeFile(home / name, text);
  }
  void CancelFirstRun() { picker.Expect(kPickerTitle, ""); }

  TempDirectory home;
  ScopedVariable variable{"VORDA_HOME", home.path().c_str()};
  FakeFolderPicker picker;
};

TEST_F(ServerConfig, FeedIsReadStartedAndShown) {
  WriteIni(Section(1, "SoundCard=2\r\nCapturePort=3\r\nBouncePort=4\r\nNoIndexProcessing=1\r\n"));
  EXPECT_EQ(ReadServerConfig(), 0);
  const WireFeedRecord& feed = Record(1);
  EXPECT_EQ(feed.NewsPath, directory / "news1");
  EXPECT_EQ(feed.ConfigFile, "vorda.ini");
  EXPECT_EQ(feed.FullConfigFile, directory / "news1/vorda.ini");
  EXPECT_EQ(feed.SoundCard, 2);
  EXPECT_EQ(feed.CapturePort, 3);
  EXPECT_EQ(feed.BouncePort, 4);
  EXPECT_EQ(feed.NoIndexProcessing, 1);
  EXPECT_EQ(FeedForm(1).Tag(), "1");
  EXPECT_EQ(FeedForm(1).Text(), "Vorda Server : Wire 1");
  EXPECT_TRUE(FeedForm(1).Visible());
  EXPECT_EQ(FeedForm(1).Left(), 0);
  EXPECT_EQ(gFeedFormCount, 1);
  EXPECT_EQ(ports->openingsTried(), (std::vector<std::int16_t>{3, 4}));
}

TEST_F(ServerConfig, FeedConfigurationFileMayHaveAnotherName) {
  WriteIni(Section(1, "ConfigFile=sport.ini\r\n"));
  WriteWholeFile(directory / "news1/sport.ini", "[General]\r\nName=Sport\r\n");
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(FeedForm(1).lblConfigFile()->Caption(), directory / "news1/sport.ini");
  EXPECT_EQ(FeedForm(1).Text(), "Vorda Server : Sport");
}

TEST_F(ServerConfig, UnconfiguredFeedKeepsZeroInItsKeysAndHasNoForm) {
  WriteIni(Section(1) +
           "[WireFeed2]\r\nCapturePort=2\r\nBouncePort=3\r\nSoundCard=4\r\nNoIndexProcessing=1\r\n");
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(Record(2).CapturePort, 0);
  EXPECT_EQ(Record(2).BouncePort, 0);
  EXPECT_EQ(Record(2).SoundCard, 0);
  EXPECT_EQ(Record(2).NoIndexProcessing, 0);
  EXPECT_EQ(Record(2).FullConfigFile, "\\vorda.ini");
  EXPECT_EQ(gFeedForms[1], nullptr);
}

TEST_F(ServerConfig, FeedsOneAndThreeStandSideBySideAndSlotTwoIsEmpty) {
  WriteIni(Section(1) + Section(3));
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(gFeedFormCount, 2);
  EXPECT_EQ(gFeedForms[1], nullptr);
  EXPECT_EQ(gFeedForms[3], nullptr);
  EXPECT_EQ(FeedForm(1).Left(), 0);
  EXPECT_EQ(FeedForm(3).Left(), 6060);
  EXPECT_EQ(FeedForm(3).Top(), 30);
  EXPECT_EQ(FeedForm(3).Tag(), "3");
  EXPECT_EQ(gActiveFeed, 3);
}

TEST_F(ServerConfig, FourFeedsStandInTheOrderOfTheirNumbers) {
  WriteIni(Section(4) + Section(3) + Section(2) + Section(1));
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(gFeedFormCount, 4);
  for (std::int16_t n = 1; n <= 4; ++n) EXPECT_EQ(FeedForm(n).Left(), 6060 * (n - 1)) << n;
}

TEST_F(ServerConfig, BlankWindowTakesItsPlaceInTheRow) {
  WriteIni(Section(1) + Section(2));
  const std::string missing = directory / "news1/vorda.ini";
  std::filesystem::remove(missing);
  boxes.Expect("Warning : No Vorda information was found in the specifed news directory: " + missing);
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(gFeedFormCount, 2);
  EXPECT_EQ(FeedForm(1).Text(), "Wire Feed Capture");
  EXPECT_EQ(FeedForm(1).Left(), 0);
  EXPECT_EQ(FeedForm(2).Left(), 6060);
}

TEST_F(ServerConfig, FeedRunsBeforeTheNextOneIsRead) {
  WriteIni(Section(1, "CapturePort=9\r\n") + Section(2));
  boxes.Expect("Couldn't open port 9 for data capture, error : Device unavailable", platform::BoxAnswer::Ok,
               [] {
                 EXPECT_EQ(Record(1).Name, "Wire 1");
                 EXPECT_EQ(Record(2).NewsPath, "");
                 EXPECT_EQ(gFeedForms[1], nullptr);
                 EXPECT_EQ(gFeedFormCount, 0);
               });
  EXPECT_EQ(ReadServerConfig(), 0);
}

TEST_F(ServerConfig, LargestAndSmallestNumbersOfAKeyPass) {
  WriteIni(Section(1, "NoIndexProcessing=32767\r\nCapturePort=-32768\r\n"));
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(Record(1).NoIndexProcessing, 32767);
  EXPECT_EQ(Record(1).CapturePort, -32768);
}

TEST_F(ServerConfig, NumberTooLargeOfAFeedWithoutADirectoryIsNotRead) {
  WriteIni(Section(1) + "[WireFeed2]\r\nCapturePort=40000\r\n");
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(Record(2).CapturePort, 0);
}

TEST_F(ServerConfig, NumberIsTheLeadingDigitsAndNoDigitsAreZero) {
  WriteIni(Section(
      1, "CapturePort=3 (COM3)\r\nBouncePort=none\r\nNoIndexProcessing=\r\nSoundCard=4294967297\r\n"));
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(Record(1).CapturePort, 3);
  EXPECT_EQ(Record(1).BouncePort, 0);
  EXPECT_EQ(Record(1).NoIndexProcessing, 0);
  EXPECT_EQ(Record(1).SoundCard, 1);
}

TEST_F(ServerConfig, PathOfThreeHundredCharactersIsCut) {
  const std::string path = "/" + std::string(299, 'n');
  WriteIni("[WireFeed1]\r\nNewsPath=" + path + "\r\nConfigFile=" + std::string(300, 'c') + "\r\n");
  const std::string cut = path.substr(0, 254) + "/" + std::string(254, 'c');
  boxes.Expect("Warning : No Vorda information was found in the specifed news directory: " + cut);
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(Record(1).FullConfigFile, cut);
}

using ServerConfigDeathTest = ServerConfig;

TEST_F(ServerConfigDeathTest, NumberTooLargeForAKeyStopsTheProgram) {
  const auto stopsWith = [this](const std::string& line) {
    WriteIni(Section(1, line + "\r\n"));
    // The box can't be expected by the queue: the program ends in it.
    const platform::ScopedHook box(platform::MessageBoxHook(), [](const platform::BoxRequest& request) {
      std::fputs(request.icon == BoxIcon::Critical ? request.text.c_str() : "another icon", stderr);
      return platform::BoxAnswer::Ok;
    });
    EXPECT_EXIT(ReadServerConfig(), ::testing::ExitedWithCode(1), "^Run-time error '6':\n\nOverflow$")
        << line;
  };
  stopsWith("SoundCard=32768");
  stopsWith("CapturePort=-32769");
  stopsWith("BouncePort=99999");
  stopsWith("NoIndexProcessing=65536");
}

TEST_F(ServerConfig, FirstRunStoresTheChosenDirectoryAndStartsFeedOne) {
  const std::string chosen = NewsDirectory(1);
  picker.Expect(kPickerTitle, chosen);
  bool written = false;
  boxes.Expect("You should now choose Setup Feed 1 from the Settings menu", platform::BoxAnswer::Ok, [&] {
    written = ReadWholeFile(home / "vdServer.INI") == "[WireFeed1]\r\nNewsPath=" + chosen + "\r\n";
    EXPECT_EQ(gFeedForms[0], nullptr);
  });
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(boxes.Last().icon, BoxIcon::Information);
  EXPECT_TRUE(written);
  EXPECT_EQ(FeedForm(1).Text(), "Vorda Server : Wire 1");
  EXPECT_EQ(Record(1).CapturePort, 0);
  EXPECT_EQ(gFeedFormCount, 1);
}

TEST_F(ServerConfig, FirstRunWithoutAConfigurationFileStoresTheDirectoryAndGivesABlankWindow) {
  picker.Expect(kPickerTitle, directory.path());
  boxes.Expect("You should now choose Setup Feed 1 from the Settings menu");
  boxes.Expect("Warning : No Vorda information was found in the specifed news directory: " +
               directory.path() + "/vorda.ini");
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(ReadWholeFile(home / "vdServer.INI"), "[WireFeed1]\r\nNewsPath=" + directory.path() + "\r\n");
  EXPECT_EQ(FeedForm(1).Text(), "Wire Feed Capture");
  EXPECT_EQ(gFeedFormCount, 1);
}

TEST_F(ServerConfig, FirstRunWritesTheFileThatTheCommandLineNames) {
  CommandLine({"/P", "my.ini"});
  const std::string chosen = NewsDirectory(1);
  picker.Expect(kPickerTitle, "  " + chosen + "  ");
  boxes.Expect("You should now choose Setup Feed 1 from the Settings menu");
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(JoinedNames(home.path()), "MY.INI");
  EXPECT_EQ(ReadWholeFile(home / "MY.INI"), "[WireFeed1]\r\nNewsPath=" + chosen + "\r\n");
}

TEST_F(ServerConfig, FirstRunAddsItsKeyToWhatStands) {
  const std::string chosen = NewsDirectory(1);
  const std::string rest = "CapturePort=2\n\n[Audio]\nEditor=x";
  WriteIni("; mine\n[wirefeed1]\nnewspath=\n" + rest);
  picker.Expect(kPickerTitle, chosen);
  boxes.Expect("You should now choose Setup Feed 1 from the Settings menu");
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(ReadWholeFile(home / "vdServer.INI"), "; mine\n[wirefeed1]\nnewspath=" + chosen + "\n" + rest);
  EXPECT_EQ(Record(1).CapturePort, 2);
}

TEST_F(ServerConfig, FirstRunGoesOnSilentlyWhereTheFileCantBeWritten) {
  std::filesystem::create_directory(home / "vdServer.INI");
  picker.Expect(kPickerTitle, NewsDirectory(1));
  boxes.Expect("You should now choose Setup Feed 1 from the Settings menu");
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(FeedForm(1).Text(), "Vorda Server : Wire 1");
  EXPECT_EQ(JoinedNames(home / "vdServer.INI"), "");
}

TEST_F(ServerConfig, CancelledFirstRunWritesNothingAndFails) {
  CancelFirstRun();
  EXPECT_EQ(ReadServerConfig(), -1);
  EXPECT_EQ(JoinedNames(home.path()), "");
  EXPECT_EQ(gFeedForms[0], nullptr);
  EXPECT_EQ(gFeedFormCount, 0);
}

TEST_F(ServerConfig, AnswerOfBlanksIsACancel) {
  picker.Expect(kPickerTitle, "   ");
  EXPECT_EQ(ReadServerConfig(), -1);
  EXPECT_EQ(JoinedNames(home.path()), "");
}

TEST_F(ServerConfig, FeedTwoAloneGetsItsWindowAndTheLoadStillFails) {
  WriteIni(Section(2));
  CancelFirstRun();
  EXPECT_EQ(ReadServerConfig(), -1);
  EXPECT_EQ(gFeedFormCount, 1);
  EXPECT_EQ(FeedForm(2).Text(), "Vorda Server : Wire 2");
  EXPECT_EQ(FeedForm(2).Left(), 0);
  EXPECT_TRUE(FeedForm(2).Visible());
}

TEST_F(ServerConfig, NameBehindTheSwitchIsUsedInCapitalsAndFoundInLowerCase) {
  CommandLine({"/P", "my.ini"});
  WriteIni(Section(1), "my.ini");
  EXPECT_EQ(ReadServerConfig(), 0);
  EXPECT_EQ(gIniFileName, "MY.INI");
  EXPECT_EQ(gFeedFormCount, 1);
}

TEST_F(ServerConfig, FormsOfTheSwitch) {
  const std::pair<std::vector<const char*>, const char*> forms[] = {
      {{}, "vdServer.INI"},
      {{"my.ini"}, "vdServer.INI"},
      {{"/p", "my.ini"}, "MY.INI"},
      {{"/P", "first.ini", "second.ini"}, "FIRST.INI"},
      {{"/Pxyz", "f.ini"}, "F.INI"},
      {{"first.ini", "/P", "second.ini"}, "SECOND.INI"},
      {{"/P", "", "", "far.ini"}, "FAR.INI"},
      {{"/P", "/etc/Vorda/a.ini"}, "/ETC/VORDA/A.INI"},
  };
  for (const auto& [arguments, name] : forms) {
    CommandLine(arguments);
    CancelFirstRun();
    EXPECT_EQ(ReadServerConfig(), -1);
    EXPECT_EQ(gIniFileName, name);
  }
}

TEST_F(ServerConfig, SwitchWithoutANameFailsWithTheUsage) {
  for (const std::vector<const char*>& arguments :
       {std::vector<const char*>{"/P"}, {"/Pmy.ini"}, {"a.ini", "/p"}, {"/P", "  "}}) {
    CommandLine(arguments);
    boxes.Expect(kUsage);
    EXPECT_EQ(ReadServerConfig(), -1);
    EXPECT_EQ(boxes.Last().icon, BoxIcon::Critical);
    EXPECT_EQ(boxes.Last().buttons, platform::BoxButtons::Ok);
  }
}

}  // namespace
}  // namespace vorda::test
