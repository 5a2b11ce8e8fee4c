#include "feed/StoryCapture.h"

#include <cstring>
#include <utility>

#include "platform/Files.h"
#include "platform/NativePath.h"
#include "platform/Settings.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

// How many characters stand ahead of the first one of `code`; all of them when there is none.
std::size_t LengthAhead(std::string_view data, int code) {
  if (code < 0 || code > 255) return data.size();
  const void* found = std::memchr(data.data(), code, data.size());
  return found == nullptr ? data.size()
                          : static_cast<std::size_t>(static_cast<const char*>(found) - data.data());
}

}  // namespace

StoryPiece NextStoryPiece(std::string_view data, int startChar, int endChar) {
  std::size_t length = LengthAhead(data, endChar);
  length = LengthAhead(data.substr(0, length), startChar);
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
      platform::NativePath(feed->StoryFileName) + "|" + platform::NativePath(feed->FullConfigFile);
  RunProcess(program, arguments, 0, kWaitNone, kShowMinimized, information);
  announce_("Processed New Story");
  feed->StoryFileHandle = 0;
  feed->StoryFileName.clear();
}

}  // namespace vorda
