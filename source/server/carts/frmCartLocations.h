// Where the parts of the wall lie: one row a part.

#pragma once

#include <string>

#include "controls/DialogForm.h"

namespace vorda {

class frmCartLocations : public controls::DialogForm {
 public:
  static frmCartLocations& Default();

  // The INI file that OK writes to; set by the opener.
  std::string IniFileName;

 protected:
  void BuildControls(QWidget* client) override;
  void OnLoad() override;
  void OnActivate() override;
  void OnAccept() override;

 private:
  frmCartLocations();
  std::string Row(int part);
  void SetRow(int part, const std::string& location);
  bool OneDirectoryForAll();
  void BuildRow(QWidget* client, int part);
  void OneDirectoryClicked();
  void FirstRowChanged();
  void Browse(int part);
  void StoreRows();
  void WriteRows() const;
};

// The name under which the locations are written, whatever INI file the server reads.
inline constexpr const char* kLocationsIniFile = "vdserver.ini";

// Has the operator fill in the locations, above the frame.
void AskForCartLocations(const controls::Form& frame);

}  // namespace vorda
