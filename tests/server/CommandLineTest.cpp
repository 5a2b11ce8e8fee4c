// From the words that the program is started with to the name of its INI file.

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "platform/MessageBox.h"
#include "shell/ServerState.h"
#include "support/FakeDesktop.h"

namespace vorda {
namespace {

using Words = std::vector<const char*>;

struct StartRow {
  Words words;
  const char* iniFileName = nullptr;
};
void PrintTo(const StartRow& row, std::ostream* out) {
  for (const char* word : row.words) *out << "<" << word << "> ";
}

class Start {
 public:
  explicit Start(const Words& words) {
    gIniFileName = "before";
    TakeCommandLine(static_cast<int>(words.size()), words.data());
  }
  ~Start() {
    gCommandLine.clear();
    gIniFileName = "vdServer.INI";
  }

  test::FakeBoxes boxes;
};

class CommandLineNameTest : public ::testing::TestWithParam<StartRow> {};

// The frame and the load of the server INI both work it out.
TEST_P(CommandLineNameTest, NameOutOfTheWords) {
  const Start start(GetParam().words);
  for (int time = 0; time < 2; ++time) {
    EXPECT_TRUE(ResolveIniFileName());
    EXPECT_EQ(gIniFileName, GetParam().iniFileName);
  }
}

const StartRow kStartRows[] = {
    {{}, "vdServer.INI"},
    {{""}, "vdServer.INI"},
    {{"  "}, "vdServer.INI"},
    // Without the switch a name is ignored.
    {{"x.ini"}, "vdServer.INI"},
    {{"/etc/vorda/x.ini"}, "vdServer.INI"},
    {{"-p", "x.ini"}, "vdServer.INI"},
    {{"/", "p", "x.ini"}, "vdServer.INI"},
    {{"\\p", "x.ini"}, "vdServer.INI"},
    {{"-platform", "offscreen"}, "vdServer.INI"},
    // The switch in either case, and the name in capitals.
    {{"/P", "myini.ini"}, "MYINI.INI"},
    {{"/p", "myini.ini"}, "MYINI.INI"},
    {{"/p", "D:\\News\\my.ini"}, "D:\\NEWS\\MY.INI"},
    {{"/p", "/etc/vorda/x.ini"}, "/ETC/VORDA/X.INI"},
    // Of more words the first one behind the switch.
    {{"/P", "a.ini", "b.ini"}, "A.INI"},
    {{"first.ini", "/P", "a.ini", "b.ini"}, "A.INI"},
    {{"/P", "a.ini", "/P", "b.ini"}, "A.INI"},
    {{"/P", "/P", "a.ini"}, "/P"},
    // Letters at the switch are no name; that begins behind the next blank.
    {{"/pfoo", "x.ini"}, "X.INI"},
    {{"/p:foo", "x.ini"}, "X.INI"},
    {{"/pfoo", "x.ini", "y.ini"}, "X.INI"},
    // The switch is found anywhere, in a path too.
    {{"/srv/PLAYOUT", "/P", "X.INI"}, "/P"},
    {{"/srv/playout", "/p", "x.ini"}, "/P"},
    {{"/srv/playout/a.ini", "x.ini"}, "X.INI"},
    {{"/srv/wire", "/P", "X.INI"}, "X.INI"},
    {{"/P", "/srv/PLAYOUT/x.ini"}, "/SRV/PLAYOUT/X.INI"},
    {{"x/p", "x.ini"}, "X.INI"},
    {{"//p", "x.ini"}, "X.INI"},
    // Blanks in one word are blanks of the line, and any number of them counts as one.
    {{"/P x.ini"}, "X.INI"},
    {{" /P ", " x.ini "}, "X.INI"},
    {{"/P", "", "", "x.ini"}, "X.INI"},
    {{"/P", "my news.ini"}, "MY"},
    {{"/P", "\"my", "news.ini\""}, "\"MY"},
    // UTF-8, as the shell hands it over.
    {{"/p", "m\xC3\xBCnchen.ini"}, "M\xDCNCHEN.INI"},
};
INSTANTIATE_TEST_SUITE_P(Starts, CommandLineNameTest, ::testing::ValuesIn(kStartRows));

class CommandLineWithoutANameTest : public ::testing::TestWithParam<StartRow> {};

TEST_P(CommandLineWithoutANameTest, TellsTheCorrectFormEachTime) {
  Start start(GetParam().words);
  for (int time = 0; time < 2; ++time) {
    start.boxes.Expect("Invalid .INI file in command line\nCorrect form : vdserver[.exe] [IniFileName]");
    EXPECT_FALSE(ResolveIniFileName());
    EXPECT_EQ(start.boxes.Last().icon, platform::BoxIcon::Critical);
    EXPECT_EQ(start.boxes.Last().buttons, platform::BoxButtons::Ok);
  }
}

const StartRow kWithoutAName[] = {
    {{"/P"}},           {{"/p"}},
    {{"/P "}},          {{"  /P  "}},
    {{"/P", ""}},       {{"/P", " ", "   "}},
    {{"/Pfoo"}},        {{"/Px.ini"}},
    {{"x.ini", "/P"}},  {{"/srv/wire/x.ini", "/p"}},
    {{"/srv/PLAYOUT"}}, {{"/srv/playout/x.ini"}},
    {{"/P\tx.ini"}},
};
INSTANTIATE_TEST_SUITE_P(Starts, CommandLineWithoutANameTest, ::testing::ValuesIn(kWithoutAName));

}  // namespace
}  // namespace vorda
