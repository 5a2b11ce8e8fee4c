// The frame: the system's one top-level window. Loading it is the start-up, unloading it the shutdown.

#pragma once

#include <QMainWindow>
#include <QMdiArea>
#include <QMenu>

#include <cstdint>

#include "controls/Form.h"

namespace vorda {

// Ends the recordings of the feed windows in slots 1 to gFeedFormCount. This goes by slots: an empty one gets
// a new form for the call, and with a gap in the numbering the highest feeds are not reached.
void ShutDownFeeds();

class frmVordaServer : public controls::Form {
 public:
  static frmVordaServer& Default();

  // Ends the program as unloading the frame does: ends recordings, closes files, ends at once.
  [[noreturn]] static void ShutDown();

 protected:
  QWidget* MakeHost() override;
  QWidget* MakeClient(QWidget* host) override;
  void BuildControls(QWidget* client) override;
  void OnLoad() override;
  void OnResize() override;
  void OnUnload() override;

 private:
  frmVordaServer() : Form("frmVordaServer") {}
  void BuildMenus(QMainWindow* frame);
  void ListChildWindows(QMenu* menu);

  void MakeRoomForScrollBar();

  QMdiArea* area_ = nullptr;
  bool started_ = false;  // the start-up is over
};

}  // namespace vorda
