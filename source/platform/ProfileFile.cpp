#include "platform/ProfileFile.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <list>
#include <memory>
#include <optional>

#include "platform/FileStamp.h"
#include "platform/NumericValue.h"
#include "platform/ProfileStore.h"
#include "platform/ProfileText.h"
#include "platform/RunTimeError.h"

namespace vorda::platform {
namespace {

// The feeds' files, the server's, the platform's, and as many again.
constexpr std::size_t kMostFiles = 16;
constexpr std::size_t kLongestValue = 254;

struct KeptFile {
  std::string path;
  FileStamp stamp;
  std::shared_ptr<const ProfileText> text;
};

// The files read last, the newest in front.
std::list<KeptFile>& KeptFiles() {
  static std::list<KeptFile> files;
  return files;
}

std::shared_ptr<const ProfileText> ReadAfresh(const std::string& path) {
  std::optional<ProfileBytes> read = ReadProfileBytes(path);
  if (!read) return nullptr;
  auto text = std::make_shared<const ProfileText>(std::move(read->bytes));
  if (read->keepable) {
    KeptFiles().push_front({path, read->stamp, text});
    if (KeptFiles().size() > kMostFiles) KeptFiles().pop_back();
  }
  return text;
}

// The file's text, null when it can't be read.
std::shared_ptr<const ProfileText> TextOf(std::string_view file) {
  const std::string path = ProfilePath(file);
  if (path.empty()) return nullptr;
  std::list<KeptFile>& files = KeptFiles();
  const auto kept =
      std::find_if(files.begin(), files.end(), [&](const KeptFile& entry) { return entry.path == path; });
  if (kept == files.end()) return ReadAfresh(path);
  if (StampOf(path) == kept->stamp) {
    files.splice(files.begin(), files, kept);
    return kept->text;
  }
  files.erase(kept);
  return ReadAfresh(path);
}

}  // namespace

std::string ReadProfileString(std::string_view section, std::string_view key, std::string_view defaultValue,
                              std::string_view file) {
  const std::shared_ptr<const ProfileText> text = TextOf(file);
  const std::optional<std::string_view> value = text ? text->Value(section, key) : std::nullopt;
  return std::string(value.value_or(defaultValue).substr(0, kLongestValue));
}

std::int32_t ReadProfileInteger(std::string_view section, std::string_view key, std::int32_t defaultValue,
                                std::string_view file) {
  return LeadingInteger(ReadProfileString(section, key, "", file)).value_or(defaultValue);
}

std::int16_t ReadProfileShort(std::string_view section, std::string_view key, std::int16_t defaultValue,
                              std::string_view file) {
  const std::int32_t value = ReadProfileInteger(section, key, defaultValue, file);
  if (value < std::numeric_limits<std::int16_t>::min() || value > std::numeric_limits<std::int16_t>::max()) {
    StopWithRuntimeError(kOverflow);
  }
  return static_cast<std::int16_t>(value);
}

std::vector<std::pair<std::string, std::string>> ReadProfileSection(std::string_view section,
                                                                    std::string_view file) {
  const std::shared_ptr<const ProfileText> text = TextOf(file);
  return text ? text->Keys(section) : std::vector<std::pair<std::string, std::string>>();
}

bool WriteProfileString(std::string_view section, std::string_view key, std::string_view value,
                        std::string_view file) {
  return ChangeProfile(
      file, [&](const std::string& bytes) { return ProfileText(bytes).WithValue(section, key, value); });
}

}  // namespace vorda::platform
