// Wave files of any bytes: what is told of them, and that no command string does harm.
//
// Input: a command string (a text), whose "%" stands for the file's path, the file.

#include <optional>
#include <string>
#include <vector>

#include "Target.h"
#include "platform/MciDevice.h"
#include "platform/MciErrors.h"
#include "platform/RiffFile.h"
#include "support/TempDirectory.h"

namespace vorda::fuzz {
namespace {

using platform::MciSendString;
using platform::ReadRiffWave;
using platform::RiffWave;

struct PlainChunk {
  std::string id;
  std::uint64_t size;     // as told
  std::string_view body;  // as it is there
};

std::uint64_t PlainNumber(std::string_view bytes, std::size_t width) {
  std::uint64_t number = 0;
  std::uint64_t weight = 1;
  for (const char c : bytes.substr(0, width)) {
    number += weight * static_cast<unsigned char>(c);
    weight *= 256;
  }
  return number;
}

bool StartsKnown(std::string_view bytes) {
  static const std::string known =
      "fmt |data|fact|LIST|JUNK|bext|cue |PEAK|PAD |id3 |iXML|cart|smpl|inst|levl|mext|FLLR|DISP|plst|_PMX";
  const std::size_t at = bytes.size() < 4 ? std::string::npos : known.find(bytes.substr(0, 4));
  return at != std::string::npos && at % 5 == 0;
}

// All chunks of the file, eaten from its front.
std::vector<PlainChunk> PlainChunks(std::string_view left) {
  std::vector<PlainChunk> chunks;
  while (left.size() >= 8 && chunks.size() < 1000) {
    PlainChunk chunk{std::string(left.substr(0, 4)), PlainNumber(left.substr(4), 4), {}};
    if (chunk.id == "data" && chunk.size == 0xFFFFFFFF) {
      for (const PlainChunk& earlier : chunks)
        if (earlier.id == "ds64" && earlier.size >= 16)
          chunk.size = PlainNumber(earlier.body.substr(std::min<std::size_t>(8, earlier.body.size())), 8);
    }
    left.remove_prefix(8);
    chunk.body = left.substr(0, chunk.size);
    left.remove_prefix(chunk.body.size());
    if (chunk.size % 2 == 1 && !left.empty() && !StartsKnown(left)) left.remove_prefix(1);
    chunks.push_back(chunk);
  }
  return chunks;
}

struct PlainWave {
  bool isWave = false;
  std::uint64_t milliseconds = 0;
};

std::uint64_t PlainScaled(std::uint64_t count, std::uint64_t perSecond) {
  return perSecond == 0 ? 0 : count * 1000 / perSecond;  // no input is so long that this overflows
}

std::uint64_t PlainLength(std::string_view format, const PlainChunk& data, std::uint64_t fact) {
  const std::uint64_t rate = PlainNumber(format.substr(4), 4);
  const std::uint64_t average = PlainNumber(format.substr(8), 4);
  const std::uint64_t block = PlainNumber(format.substr(12), 2);
  std::uint64_t tag = PlainNumber(format, 2);
  if (tag == 0xFFFE) {
    static const std::string tail("\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 14);
    tag = format.size() >= 40 && format.substr(26, 14) == tail ? PlainNumber(format.substr(24), 2) : 0;
  }
  if (rate == 0 || PlainNumber(format.substr(2), 2) == 0 || data.body.empty()) return 0;
  if (tag == 1 || tag == 3 || tag == 6 || tag == 7)
    return block == 0 ? 0 : PlainScaled(data.body.size() / block, rate);
  bool believed = fact != 0 && fact != 0xFFFFFFFF && data.body.size() == data.size;
  if (average != 0) {
    const double told = static_cast<double>(fact) / static_cast<double>(rate);
    const double likely = static_cast<double>(data.body.size()) / static_cast<double>(average);
    believed = believed && told <= likely * 4 + 1 && likely <= told * 4 + 1;
  }
  return believed ? PlainScaled(fact, rate) : PlainScaled(data.body.size(), average);
}

PlainWave Plain(std::string_view bytes) {
  const std::string_view kind = bytes.substr(0, 4);
  if (bytes.size() < 12 || bytes.substr(8, 4) != "WAVE") return {};
  if (kind != "RIFF" && kind != "RF64" && kind != "BW64") return {};
  std::optional<std::string_view> format;
  std::optional<PlainChunk> data;
  std::optional<std::uint64_t> fact;
  for (const PlainChunk& chunk : PlainChunks(bytes.substr(12))) {
    if (chunk.id == "fmt " && !format && chunk.body.size() >= 14) format = chunk.body.substr(0, 40);
    if (chunk.id == "data" && !data) data = chunk;
    if (chunk.id == "fact" && !fact && chunk.size >= 4) fact = PlainNumber(chunk.body, 4);
  }
  if (!format) return {};
  return {true, data ? PlainLength(*format, *data, fact.value_or(0)) : 0};
}

void CheckWave(const std::string& path, std::string_view bytes) {
  const PlainWave plain = Plain(bytes);
  RiffWave wave;
  const int result = ReadRiffWave(path, wave);
  Require(result == (plain.isWave ? 0 : platform::kNotAWave), "a wave is a wave");
  Require(wave.milliseconds == plain.milliseconds, "its length is what the plain reader finds");
  Require(wave.dataBegin <= bytes.size() && wave.dataBytes <= bytes.size() - wave.dataBegin,
          "its sound lies in the file");
  std::string reply;
  const std::int32_t opened = MciSendString("open \"" + path + "\" alias a", &reply);
  Require(opened == (plain.isWave ? 0 : platform::kMciInvalidFile) && reply.empty(), "it opens");
  Require(MciSendString("status A length", &reply) == (plain.isWave ? 0 : platform::kMciInvalidDeviceName),
          "what is open answers");
  Require(reply == (plain.isWave ? std::to_string(plain.milliseconds) : ""), "and tells the same length");
  MciSendString("close a");
}

void CheckCommand(std::string command, const std::string& path) {
  // No other file is named, so that no device of this machine is opened.
  std::erase(command, '/');
  for (std::size_t at = command.find('%'); at != std::string::npos; at = command.find('%', at + path.size()))
    command.replace(at, 1, path);
  std::string reply = "left";
  const std::int32_t code = MciSendString(command, &reply);
  Require(code == 0 || !platform::MciErrorText(code).empty(), "every error has its text");
  Require(reply.empty(), "nothing is open that could reply");
  const std::int32_t again = MciSendString(command);
  Require(again == code || (code == 0 && again == platform::kMciDuplicateAlias),
          "only what was opened can't be opened again");
  Require(MciSendString("close all") == 0, "all is closed");
  Require(MciSendString("close a") == platform::kMciInvalidDeviceName, "nothing stays open");
}

}  // namespace
}  // namespace vorda::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vorda::fuzz;
  static const vorda::test::TempDirectory directory;
  static const std::string path = directory / "sound.wav";
  Input input(bytes, size);
  const std::string command(input.Text());
  const std::string_view wave = input.Rest();
  vorda::test::WriteWholeFile(path, wave);
  CheckWave(path, wave);
  CheckCommand(command, path);
  return 0;
}
