#include "feed/StoryCapture.h"

#include <cstring>
#include <utility>

#include "platform/Files.h"
#include "platform/NativePath.h"
#include "platform/Settings.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

constexpr std::size_t kFirstWindow = 256;

// How many characters stand ahead of the first one of `code`; all of them when there is none.
std::size_t LengthAhead(std::string_view data, int code) {
  if (code < 0 || code > 255) return data.size();
  const void* found = std::memchr(data.data(), code, data.size());
  return found == nullptr ? data.size()
                          : static_cast<std::size_t>(static_cast<const char*>(found) - data.data());
}

}  // namespace

// Looks in windows that grow with the piece: a search to the end of the data for each piece would cost the
// square of an arrival full of codes of one kind.
StoryPiece NextStoryPiece(std::string_view data, int startChar, int endChar) {
  std::size_t length = 0;
  for (std::size_t window = kFirstWindow; length < data.size(); window *= 2) {
    const std::string_view looked = data.substr(length, window);
    const std::size_t ahead = LengthAhead(looked.substr(0, LengthAhead(looked, endChar)), startChar);
    length += ahead;
    if (ahead < looked.size()) break;
  }
  if (length > 0) return {StoryPiece::Kind::Text, length};
  const bool ends = static_cast<unsigned char>(data.front()) == endChar;
  return {ends ? StoryPiece::Kind::End : StoryPiece::Kind::Start, 1};
}

StoryCapture::StoryCapture(std::function<std::string()> tag, std::function<void(std::string_view)> announce)
    : tag_(std::move(tag)), announce_(std::move(announce)) {}

void StoryCapture::Take(std::string_view data) {
  const WireFeedRecord* feed = FeedOfTag(tag_());
  if (feed == nullptr) return;
  while (!data.empty()) {
    const StoryPiece piece = NextStoryPiece(data, feed->StartChar, feed->EndChar);
    switch (piece.kind) {
      case StoryPiece::Kind::End:
        CloseTempTextStoryFile();
        break;
      case StoryPiece::Kind::Start:
        OpenTempTextStoryFile();
        break;
      case StoryPiece::Kind::Text:
        WriteTextBuffer(data.substr(0, piece.length));
        break;
    }
    data.remove_prefix(piece.length);
  }
}

void StoryCapture::OpenTempTextStoryFile() {
  const std::string tag = tag_();
  WireFeedRecord* feed = FeedOfTag(tag);
  if (feed == nullptr) return;
  if (feed->StoryFileHandle > 0) CloseTempTextStoryFile();
  feed->StoryFileHandle = platform::FreeFileNumber();
  feed->StoryFileName = UniqueTempFileName(feed->NewsPath, "RA" + tag);
  if (feed->StoryFileName.empty()) return;
  const std::string path = platform::NativePathOfNewFile(feed->StoryFileName);
  if (platform::OpenForOutput(feed->StoryFileHandle, path) != 0) {
    feed->StoryFileHandle = 0;
    feed->StoryFileName.clear();
  }
}

void StoryCapture::WriteTextBuffer(std::string_view bufText) {
  const WireFeedRecord* feed = FeedOfTag(tag_());
  if (feed == nullptr) return;
  if (feed->StoryFileHandle == 0) OpenTempTextStoryFile();
  if (feed->StoryFileHandle == 0) return;
  platform::WriteToFile(feed->StoryFileHandle, bufText);
}

void StoryCapture::CloseTempTextStoryFile() {
  WireFeedRecord* feed = FeedOfTag(tag_());
  if (feed == nullptr || feed->StoryFileHandle == 0) return;
  platform::CloseFile(feed->StoryFileHandle);
  platform::ProcessInformation information;
  const std::string program = platform::JoinPath(platform::ProgramDirectory(), "ItemFile.exe");
  const std::string arguments =
      platform::NativePathOfNewFile(feed->StoryFileName) + "|" + ConfigPath(feed->FullConfigFile);
  RunProcess(program, arguments, 0, kWaitNone, kShowMinimized, information);
  announce_("Processed New Story");
  feed->StoryFileHandle = 0;
  feed->StoryFileName.clear();
}

// The configuration file as the tool can open it. A look for it without regard to case reads the whole
// directory, which a missing story tool fills: one file found so is kept for as long as it is there.
std::string StoryCapture::ConfigPath(const std::string& fullConfigFile) {
  std::string path = platform::NativePathOfNewFile(fullConfigFile);
  if (platform::NativeFileSize(path) >= 0) return path;
  if (configText_ != fullConfigFile || platform::NativeFileSize(configPath_) < 0) {
    configPath_ = platform::NativePath(fullConfigFile);
    configText_ = fullConfigFile;
  }
  return configPath_;
}

}  // namespace vorda
