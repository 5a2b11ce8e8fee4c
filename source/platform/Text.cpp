#include "platform/Text.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace vorda::platform {
namespace {

// Codes 0x80 to 0x9F, where the code page leaves Latin 1. The five undefined codes stand for themselves.
constexpr std::array<char16_t, 32> kUnicodeFrom80 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char16_t CodeToUnicode(unsigned char code) {
  return code >= 0x80 && code <= 0x9F ? kUnicodeFrom80[code - 0x80U] : static_cast<char16_t>(code);
}

std::optional<unsigned char> UnicodeToCode(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF))
    return static_cast<unsigned char>(character);
  const auto* const found = std::find(kUnicodeFrom80.begin(), kUnicodeFrom80.end(), character);
  if (found == kUnicodeFrom80.end()) return std::nullopt;
  return static_cast<unsigned char>(0x80 + (found - kUnicodeFrom80.begin()));
}

constexpr unsigned char UpperCode(unsigned code) {
  const bool plain = code >= 'a' && code <= 'z';
  // 0xF7 is the division sign among the accented letters, as 0xD7 is the times sign among their capitals.
  const bool accented = code >= 0xE0 && code <= 0xFE && code != 0xF7;
  if (plain || accented) return static_cast<unsigned char>(code - 0x20);
  if (code == 0x9A || code == 0x9C || code == 0x9E) return static_cast<unsigned char>(code - 0x10);
  if (code == 0xFF) return 0x9F;
  return static_cast<unsigned char>(code);
}

constexpr std::array<unsigned char, 256> MakeUpperCodes() {
  std::array<unsigned char, 256> codes{};
  for (unsigned code = 0; code < codes.size(); ++code) codes[code] = UpperCode(code);
  return codes;
}

constexpr std::array<unsigned char, 256> kUpperCodes = MakeUpperCodes();

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

char UpperCase(char c) {
  return static_cast<char>(kUpperCodes[static_cast<unsigned char>(c)]);
}

std::string UpperCase(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) c = UpperCase(c);
  return upper;
}

bool SameText(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char left, char right) { return UpperCase(left) == UpperCase(right); });
}

std::string Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

QString ToUnicode(std::string_view ansi) {
  QString text(static_cast<qsizetype>(ansi.size()), Qt::Uninitialized);
  std::transform(ansi.begin(), ansi.end(), text.begin(),
                 [](char c) { return QChar(CodeToUnicode(static_cast<unsigned char>(c))); });
  return text;
}

std::string FromUnicode(const QString& text) {
  std::string ansi;
  ansi.reserve(static_cast<std::size_t>(text.size()));
  for (qsizetype i = 0; i < text.size(); ++i) {
    char32_t character = text[i].unicode();
    if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
      character = QChar::surrogateToUcs4(text[i], text[i + 1]);
      ++i;
    }
    ansi += static_cast<char>(UnicodeToCode(character).value_or('?'));
  }
  return ansi;
}

std::string ToUtf8(std::string_view ansi) {
  std::string utf8;
  utf8.reserve(ansi.size());
  for (const char c : ansi) {
    const std::uint32_t character = CodeToUnicode(static_cast<unsigned char>(c));
    if (character < 0x80) {
      utf8 += c;
      continue;
    }
    if (character < 0x800) {
      utf8 += static_cast<char>(0xC0U | (character >> 6U));
    } else {
      utf8 += static_cast<char>(0xE0U | (character >> 12U));
      utf8 += static_cast<char>(0x80U | ((character >> 6U) & 0x3FU));
    }
    utf8 += static_cast<char>(0x80U | (character & 0x3FU));
  }
  return utf8;
}

bool FromUtf8(std::string_view utf8, std::string& ansi) {
  if (IsAscii(utf8)) {
    ansi = utf8;
    return true;
  }
  // A mark at the front is a character like any other here, and outside the code page.
  QStringDecoder decoder(QStringDecoder::Utf8,
                         QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
  const QString text = decoder(QByteArrayView(utf8.data(), static_cast<qsizetype>(utf8.size())));
  if (decoder.hasError()) return false;
  std::string result;
  result.reserve(static_cast<std::size_t>(text.size()));
  for (const QChar character : text) {
    const std::optional<unsigned char> code = UnicodeToCode(character.unicode());
    if (!code) return false;
    result += static_cast<char>(*code);
  }
  ansi = std::move(result);
  return true;
}

}  // namespace vorda::platform
