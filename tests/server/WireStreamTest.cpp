// Real wire copy through the filter and the cutter, however it happens to arrive.

#include <QByteArray>
#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "feed/CaptureText.h"
#include "support/StoryFixture.h"

namespace vorda {
namespace {

const std::string kStream = VORDA_TEST_DATA "/wire/stream/wire-open";

using Row = std::vector<std::string>;

std::vector<Row> ReadTable(const std::string& path) {
  std::ifstream file(path);
  std::vector<Row> rows;
  std::string line;
  std::getline(file, line);  // the columns' names
  while (std::getline(file, line)) {
    Row row;
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, '\t');) row.push_back(cell);
    rows.push_back(row);
  }
  return rows;
}

std::string Sha256(const std::string& bytes) {
  return QCryptographicHash::hash(QByteArray::fromStdString(bytes), QCryptographicHash::Sha256)
      .toHex()
      .toStdString();
}

// What the filter makes of bytes that arrive one by one; of bytes without a backspace, what it makes of any
// arrivals. A backspace that is an arrival of its own leaves the file alone.
std::string AsFiled(const std::string& bytes) {
  std::string filed;
  for (const char c : bytes) {
    if (c != '\n' && c != '\b') filed += c;
    if (c == '\r') filed += '\n';
  }
  return filed;
}

struct ExpectedStory {
  std::string sha256;  // "" = depends on the arrivals, since it holds backspaces; not byte by byte
  std::string source;
};

class WireStreamTest : public test::StoryFixture {
 protected:
  WireStreamTest() : raw_(test::ReadWholeFile(kStream + ".raw")) {
    processes_.atStart = [this](const platform::ProcessStart& start) {
      LookAt(start);
      std::filesystem::remove(handed_.back().path);
      handed_.back().text = Sha256(handed_.back().text);
    };
  }

  // The stories of a section: those of the manifest, and between them what stands outside of any.
  std::vector<ExpectedStory> Expect(const std::string& section, std::size_t begin, std::size_t longest) {
    std::vector<ExpectedStory> stories;
    std::size_t outside = begin;
    for (const Row& row : ReadTable(kStream + ".manifest.tsv")) {
      if (row.at(4) != section) continue;
      const std::size_t offset = std::stoul(row.at(1));
      const std::size_t length = std::stoul(row.at(2));
      EXPECT_EQ(Sha256(raw_.substr(offset, length)), row.at(3)) << "the data is damaged";
      const std::string between = AsFiled(raw_.substr(outside, offset - 1 - outside));
      if (!between.empty()) stories.push_back({Sha256(between), "outside, ahead of " + row.at(8)});
      const bool depends = longest > 1 && raw_.substr(offset, length).find('\b') != std::string::npos;
      stories.push_back({depends ? "" : Sha256(AsFiled(raw_.substr(offset, length))), row.at(8)});
      outside = offset + length + 1;
    }
    return stories;
  }

  static constexpr std::size_t kWhole = std::string::npos;

  // Sends bytes through filter and cutter in arrivals of 1 to `longest` bytes, or in one.
  void Receive(std::string_view bytes, std::size_t longest, unsigned seed) {
    std::mt19937 random(seed);
    while (!bytes.empty()) {
      std::string arrival(bytes.substr(0, longest == kWhole ? kWhole : random() % longest + 1));
      bytes.remove_prefix(arrival.size());
      text_.Append(arrival);
      Take(arrival);
    }
  }

  struct Section {
    const char* name;
    std::size_t offset;
    std::size_t length;
    std::int16_t endChar;
    std::size_t stories;
  };

  void CutAndCompare(const Section& section, std::size_t longest, unsigned seed) {
    feed().EndChar = section.endChar;
    const std::vector<ExpectedStory> expected = Expect(section.name, section.offset, longest);
    ASSERT_GE(expected.size(), section.stories);
    Receive(std::string_view(raw_).substr(section.offset, section.length), longest, seed);
    ASSERT_EQ(handed_.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      if (expected[i].sha256.empty()) continue;
      EXPECT_EQ(handed_[i].text, expected[i].sha256) << expected[i].source;
    }
    EXPECT_EQ(announced_.size(), expected.size());
    TakeLater(section.endChar);
  }

  // A story after all that has come is whole.
  void TakeLater(std::int16_t endChar) {
    Receive("\x01later" + std::string(1, static_cast<char>(endChar)), kWhole, 0);
    EXPECT_EQ(Handed().back(), Sha256("later"));
    EXPECT_EQ(feed().StoryFileHandle, 0);
  }

  static constexpr Section kA{"A", 0, 324472, 3, 52};
  static constexpr Section kB{"B", 324472, 396439, 4, 143};

  std::string raw_;
  CaptureText text_;
};

TEST_F(WireStreamTest, SectionAByteByByte) {
  CutAndCompare(kA, 1, 0);
}
TEST_F(WireStreamTest, SectionAInShortArrivals) {
  CutAndCompare(kA, 16, 11);
}
TEST_F(WireStreamTest, SectionAInFullReads) {
  CutAndCompare(kA, 4096, 12);
}
TEST_F(WireStreamTest, SectionBByteByByte) {
  CutAndCompare(kB, 1, 0);
}
TEST_F(WireStreamTest, SectionBInShortArrivals) {
  CutAndCompare(kB, 16, 21);
}
TEST_F(WireStreamTest, SectionBInFullReads) {
  CutAndCompare(kB, 4096, 22);
}
TEST_F(WireStreamTest, SectionBInOneArrival) {
  CutAndCompare(kB, kWhole, 0);
}

// Broken framing costs the story that it breaks and never one that is complete.
class BrokenWireStreamTest : public WireStreamTest {
 protected:
  void CutAndLookForCompleteStories(std::size_t longest, unsigned seed) {
    feed().EndChar = 3;
    Receive(std::string_view(raw_).substr(720911, 87609), longest, seed);
    std::size_t next = 0;  // they come in the line's order
    int complete = 0;
    for (const Row& row : ReadTable(kStream + ".hostile.tsv")) {
      if (row.at(12) == "-") continue;
      const std::string bytes = raw_.substr(std::stoul(row.at(12)), std::stoul(row.at(13)));
      ASSERT_EQ(Sha256(bytes), row.at(14)) << "the data is damaged";
      ASSERT_EQ(bytes.find_first_of("\x01\x03\b"), std::string::npos);
      const std::string sha256 = Sha256(AsFiled(bytes));
      while (next < handed_.size() && handed_[next].text != sha256) ++next;
      ASSERT_LT(next, handed_.size()) << "lost: " << row.at(4) << " " << row.at(5);
      ++next;
      ++complete;
    }
    EXPECT_EQ(complete, 21);
    TakeLater(3);
  }
};

TEST_F(BrokenWireStreamTest, ByteByByte) {
  CutAndLookForCompleteStories(1, 0);
}
TEST_F(BrokenWireStreamTest, InShortArrivals) {
  CutAndLookForCompleteStories(7, 31);
}
TEST_F(BrokenWireStreamTest, InFullReads) {
  CutAndLookForCompleteStories(4096, 32);
}

}  // namespace
}  // namespace vorda
