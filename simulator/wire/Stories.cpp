#include "wire/Stories.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vorda::simulator {
namespace {

constexpr char kStartOfHeading = 1;
constexpr char kEndOfText = 3;
constexpr char kEndOfTransmission = 4;

// The files that a word of the command line stands for; empty when it is a directory without any.
std::vector<std::string> FilesOf(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_directory(path, error)) return {path};
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(path, error)) {
    const bool hidden = entry.path().filename().string().starts_with('.');
    if (!hidden && entry.is_regular_file(error)) files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// Takes off the framing that a captured file may have round it; line ends behind the end code go with it.
std::string WithoutOwnFraming(const std::string& bytes) {
  const size_t last = bytes.find_last_not_of("\r\n");
  if (last == std::string::npos || last == 0 || bytes.front() != kStartOfHeading) return bytes;
  if (bytes[last] != kEndOfText && bytes[last] != kEndOfTransmission) return bytes;
  return bytes.substr(1, last - 1);
}

}  // namespace

std::optional<std::string> ReadFileBytes(const std::string& path, std::string& problem) {
  std::ifstream file(path, std::ios::binary);
  std::error_code error;
  if (!file || std::filesystem::is_directory(path, error)) {
    problem = path + " can't be read: " + std::strerror(file ? EISDIR : errno);
    return std::nullopt;
  }
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::optional<std::vector<Story>> ReadStories(const std::vector<std::string>& paths, std::string& problem) {
  std::vector<Story> stories;
  for (const std::string& path : paths) {
    for (const std::string& file : FilesOf(path)) {
      const std::optional<std::string> bytes = ReadFileBytes(file, problem);
      if (!bytes) return std::nullopt;
      stories.push_back(
          {.name = std::filesystem::path(file).filename().string(), .text = WithoutOwnFraming(*bytes)});
    }
  }
  if (stories.empty()) {
    problem = "there is no story in " + paths.front();
    return std::nullopt;
  }
  return stories;
}

std::string FramedStory(const Story& story, const Framing& framing) {
  return static_cast<char>(framing.start) + story.text + static_cast<char>(framing.end);
}

NoiseMaker::NoiseMaker(unsigned seed, const Framing& framing) : engine_(seed), framing_(framing) {}

std::string NoiseMaker::Next() {
  using namespace std::string_view_literals;
  constexpr std::array kBits = {"\r\n"sv,     "\r\r\n"sv, "\n"sv, "\0\0\0\0"sv, "\x16\x16\x16"sv,
                                "\x07\x07"sv, "\x7f"sv,   " "sv,  "\r\n\r\n"sv, "  \r\n"sv};
  const std::uint32_t pieces = 1 + Below(6);
  std::string noise;
  for (std::uint32_t piece = 0; piece < pieces; ++piece) noise += kBits[Below(kBits.size())];
  std::erase_if(noise, [this](char byte) {
    return byte == static_cast<char>(framing_.start) || byte == static_cast<char>(framing_.end);
  });
  return noise;
}

}  // namespace vorda::simulator
