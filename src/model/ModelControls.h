// What the query model knows of visual controls: a set of interfaces, and a
// factory that makes the controls. The model holds controls only through
// these, and only when a factory is set; with none (a headless host) no
// control is ever made and every operation that would touch one does
// nothing. The design surface implements them; tests record the calls.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/WideString.h"

namespace mv {

class TmvQueryBuilderControlOwner;

// Every control.
class ImvControl {
 public:
  virtual ~ImvControl() = default;
  // Reads the owner's state (captions, colours, positions) into the control.
  virtual void UpdateControlVisualParams(TmvQueryBuilderControlOwner* owner) = 0;
};

// A control that keeps state of its owner while it lives (datasource boxes).
class ImvStateSaver {
 public:
  virtual ~ImvStateSaver() = default;
  virtual void SaveControlStateToOwner(TmvQueryBuilderControlOwner* owner) = 0;
  virtual void RestoreControlStateFromOwner(TmvQueryBuilderControlOwner* owner) = 0;
};

struct TmvRect {
  int Left = 0, Top = 0, Right = 0, Bottom = 0;
};

class ImvLinkControl : public ImvControl {
 public:
  virtual void Realign() = 0;
};

class ImvDatasourceControl : public ImvControl {
 public:
  virtual void ReloadFieldsList() = 0;
  virtual void UpdateChecksOnFields() = 0;
  virtual WideString GetCaption() = 0;
  virtual void SetCaption(const WideString& caption) = 0;
  virtual TmvRect CalcFieldRect(const WideString& fieldName) = 0;
  virtual void SetOptimalHeight() = 0;
  virtual void TuneSize() = 0;
};

class ImvSelectListControl : public ImvControl {
 public:
  virtual int GetCurrentRow() = 0;
  virtual void SetCurrentRow(int row) = 0;
  virtual int GetCurrentCol() = 0;
  virtual void SetCurrentCol(int col) = 0;
  virtual void FillList() = 0;
};

// The page of one SELECT.
class ImvUnionSubQueryControl : public ImvControl {
 public:
  virtual TmvRect GetUnionNavigatorAlignmentRect() = 0;
  virtual ImvControl* GetSelectListParent() = 0;
  virtual ImvControl* GetDatasourcesParent() = 0;
  virtual void EnsureDatasourceVisible(TmvQueryBuilderControlOwner* datasource) = 0;
};

// The button of one SELECT in the union navigator.
class ImvUnionSubQueryNavButtonControl : public ImvControl {
 public:
  virtual void SetActive(bool active) = 0;
};

// The operator between two union members.
class ImvUnionOperatorControl : public ImvControl {
 public:
  virtual void SetUnionOperator(const WideString& text) = 0;
  virtual void SetAll(bool all) = 0;
};

// The tab of a sub-query.
class ImvSubQueryControl : public ImvControl {
 public:
  virtual ImvControl* GetUnionNavBar() = 0;
  virtual void Activate() = 0;
  virtual void SetCaption(const WideString& caption) = 0;
};

// Makes, shows and frees the controls of model objects. The owner tells
// which control it wants by its index (see each class's GetControlsCount).
class ImvControlFactory {
 public:
  virtual ~ImvControlFactory() = default;
  // A new control for slot `index` of `owner`, or null when the factory
  // has none for it. The factory keeps the control alive until DestroyControl.
  virtual ImvControl* CreateControl(TmvQueryBuilderControlOwner* owner, int index) = 0;
  virtual void ShowControl(ImvControl* control, bool visible) = 0;
  // Hides the control, detaches it from its parent control and frees it.
  virtual void DestroyControl(ImvControl* control) = 0;
  // The host's hooks around a control's life (OnAfterCreateControl, OnBeforeDestroyControl).
  virtual void AfterCreateControl(TmvQueryBuilderControlOwner*, ImvControl*) {}
  virtual void BeforeDestroyControl(TmvQueryBuilderControlOwner*, ImvControl*) {}
};

// A popup menu as data: entries carry a message key (or "-" for a line),
// the caption read from the current language, and a command the host runs
// when the entry is chosen.
struct TmvMenuItem {
  WideString Key;
  WideString Caption;
  bool Enabled = true;
  bool Default = false;
  std::vector<TmvMenuItem> SubItems;
  // Runs the entry's action; empty for lines and disabled entries.
  std::function<void()> Action;
  // Shown with a check mark (an option that is on).
  bool Checked = false;
  bool IsSeparator() const { return Key == u"-"; }
};
using TmvMenu = std::vector<TmvMenuItem>;

// Appends an entry of `key` (u"-" for a line) captioned in the current
// language; a disabled entry gets no action. The entry, for more settings.
TmvMenuItem& AddMenuItem(TmvMenu& menu, const char16_t* key, std::function<void()> action, bool enabled = true);
// The entry that opens the object's properties form, enabled when the
// dialect has a form for it (model/PropertyForms.h).
TmvMenuItem& AddEditPropsItem(TmvMenu& menu, TmvQueryBuilderControlOwner* object);

}  // namespace mv
