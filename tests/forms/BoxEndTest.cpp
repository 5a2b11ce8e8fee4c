// The end from behind open boxes: no line of what waits behind them runs.

#include <QFileDialog>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/ProgramEnd.h"
#include "platform/RunTimeError.h"
#include "platform/ScopedVariable.h"
#include "shell/frmGoodInputBox.h"
#include "shell/frmVordaServer.h"
#include "support/BoxOperator.h"
#include "support/FeedWindows.h"
#include "support/Scenario.h"
#include "support/WallLists.h"

namespace vorda::test {
namespace {

// A signal that is not heeded would leave the test to wait for ever.
void Raise(int signal) {
  QTimer::singleShot(20000, qApp, [] { EndScenario(); });
  ::raise(signal);
}

// Raises SIGTERM once `waiting` holds, from behind whatever the scenario waits in.
void RaiseOnce(const std::function<bool()>& waiting) {
  static QObject owner;
  static bool raised = false;
  new platform::ReentrantTimer(
      1,
      [waiting] {
        if (raised || !waiting()) return;
        raised = true;
        Raise(SIGTERM);
      },
      &owner);
}

// Three feeds, of which the second's port can't be opened: its box stands in the start-up, and the windows of
// feed 2 and 3 are still to come behind it. Feed 1 is alive by then, and each of its stories raises a box
// while it is handed on.
class BoxEndDeathTest : public FeedWindows, public ::testing::WithParamInterface<int> {
 protected:
  BoxEndDeathTest() {
    TakeCommandLine(0, nullptr);
    MakeWallLists(directory / "wall");
    std::string ini = WallKeys(directory / "wall");
    for (const std::string number : {"1", "2", "3"}) {
      const std::string news = directory / ("news" + number);
      std::filesystem::create_directory(news);
      WriteWholeFile(news + "/vorda.ini", "[General]\r\nName=Wire\r\n");
      ini += "[WireFeed" + number + "]\r\nNewsPath=" + news + "\r\nCapturePort=" + number + "\r\n";
    }
    WriteWholeFile(home / "vdServer.INI", ini);
    ports->FailOpenWith(platform::kDeviceUnavailable, 2);
    processes.atStart = [](const platform::ProcessStart&) {
      platform::ShowMessageBox("while a story is handed on");
      std::fputs("behind a story's box;", stderr);
    };
  }
  ~BoxEndDeathTest() override { gCommandLine.clear(); }

  // Loads the server and calls `third` once three boxes stand, each behind the one before it.
  void BehindThreeBoxes(const std::function<void(QMessageBox&)>& third) {
    const DesktopScope desktop(controls::Operator::Present);
    const platform::TerminationSignals termination([] { frmVordaServer::ShutDown(); });
    BoxOperator human;
    human.Then([this](QMessageBox& box) {
      EXPECT_EQ(box.text(), "Couldn't open port 2 for data capture, error : Device unavailable");
      EXPECT_EQ(ports->OpenOn(3), nullptr);
      ports->OpenOn(1)->Arrive("\x01one\x04");
    });
    human.Then([this](QMessageBox&) { ports->OpenOn(1)->Arrive("\x01two\x04"); });
    human.Then([third](QMessageBox& box) {
      EndIfFailed();
      third(box);
    });
    frmVordaServer::Default().Load();
    std::fputs("behind the start-up's box;", stderr);
  }

  TempDirectory home;
  ScopedVariable variable{"VORDA_HOME", home.path().c_str()};
};

TEST_P(BoxEndDeathTest, SignalBehindThreeBoxesRunsNothingBehindThem) {
  EXPECT_EXIT(RunInEventLoop([this] {
                // Who started the test may have had it ignored.
                ::signal(GetParam(), SIG_DFL);
                BehindThreeBoxes([](QMessageBox&) { Raise(GetParam()); });
              }),
              ::testing::ExitedWithCode(0), "^$");
  std::string opened;
  for (const auto& entry : std::filesystem::directory_iterator(directory / "news1"))
    if (entry.path().extension() == ".RA1") opened += ReadWholeFile(entry.path().string()) + ";";
  EXPECT_EQ(opened, "one;");
}

INSTANTIATE_TEST_SUITE_P(Signals, BoxEndDeathTest, ::testing::Values(SIGTERM, SIGINT, SIGHUP));

// The same three boxes, answered: what the test above must not see is there.
TEST_F(BoxEndDeathTest, AnsweredBoxesRunWhatIsBehindThem) {
  EXPECT_EXIT(RunInEventLoop([this] {
                BehindThreeBoxes([](QMessageBox& box) {
                  // From here on every box is answered, each as it comes.
                  static QObject owner;
                  new platform::ReentrantTimer(
                      1,
                      [] {
                        if (BoxOperator::TopBox() != nullptr) BoxOperator::TopBox()->accept();
                      },
                      &owner);
                  box.accept();
                });
              }),
              ::testing::ExitedWithCode(kScenarioHeld),
              "^(behind a story's box;){2,}behind the start-up's box;$");
}

TEST_F(BoxEndDeathTest, SignalBehindAQuestionRunsNothingBehindIt) {
  ports->FailOpenWith(platform::kNoError, 2);
  EXPECT_EXIT(RunInEventLoop([] {
                const platform::TerminationSignals termination([] { frmVordaServer::ShutDown(); });
                frmVordaServer::Default().Load();
                RaiseOnce([] { return frmGoodInputBox::Default().Visible(); });
                std::string answer;
                GoodInputBox("Which?", "", "", 0, answer, FeedForm(1));
                std::fputs("behind the question", stderr);
              }),
              ::testing::ExitedWithCode(0), "^$");
}

// The first run waits in the start-up for somebody to choose.
TEST_F(BoxEndDeathTest, SignalBehindTheFolderPickerOfTheStartUpRunsNothingBehindIt) {
  WriteWholeFile(home / "vdServer.INI", "");
  EXPECT_EXIT(
      RunInEventLoop([] {
        const DesktopScope desktop(controls::Operator::Present);
        const platform::TerminationSignals termination([] { frmVordaServer::ShutDown(); });
        RaiseOnce([] { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()) != nullptr; });
        frmVordaServer::Default().Load();
        std::fputs("behind the picker", stderr);
      }),
      ::testing::ExitedWithCode(0), "^$");
  EXPECT_EQ(ReadWholeFile(home / "vdServer.INI"), "");
}

}  // namespace
}  // namespace vorda::test
