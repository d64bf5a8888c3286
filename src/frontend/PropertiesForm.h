// Property forms: the modal dialogs through which a user edits what the
// design pane cannot show (a link's expression and outer flags, a
// datasource's alias, a SELECT's dialect-specific clauses).
//
// A form here is headless: a list of named controls (check boxes, radio
// buttons, edits, choices) with their values, and three steps that the
// dialog runs: `LoadProps` fills the values from the tree or the model,
// `CheckCanClose` validates them when the user presses OK (raising keeps the
// dialog open with the message), `SaveProps` writes them back. A visual
// dialog renders the controls and copies the user's input into the values;
// tests and hosts without a screen set the values directly.
//
// The syntax provider names the form class for an object
// (GetEditPropsFormClass); the classes are registered here by name, the
// query forms by the dialects, the link and datasource forms by the model.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "support/Class.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseSQLContext;
class TSQLSubSelectStatement;
class TSQLSubQuerySelectExpression;
class TSQLGroupByList;

// What a property form edits, as the provider is asked about it.
enum class TmvEditPropsTarget : uint8_t { Link, Datasource, UnionSubQuery };

enum class TmvFormControlKind : uint8_t {
  CheckBox,  // a value "1" or empty
  Radio,     // one of its group is checked
  Edit,      // free text
  Choice,    // the index of one of Items, as text
  Label,     // a caption only
};

struct TmvFormControl {
  TmvFormControlKind Kind = TmvFormControlKind::Edit;
  // The control's name; with ".Caption" its key in the form's section of a
  // language file.
  WideString Name;
  WideString Caption;  // English caption; an edit's is its label
  // A check box or radio button that enables this control while checked.
  WideString EnabledBy;
  WideString Group;    // radio buttons: the group they switch within
  WideString Default;  // an edit's starting text, a check box's "1"
  std::vector<WideString> Items;  // a choice's entries
};

// The objects a form works on; which are set depends on the form.
struct TmvPropsFormTarget {
  TmvBaseSQLContext* Context = nullptr;
  TmvObject* Object = nullptr;                    // a link or a datasource of the model
  TSQLSubQuerySelectExpression* Select = nullptr;  // the SELECT of a union member
  TSQLSubSelectStatement* Statement = nullptr;     // the statement the member belongs to
  TSQLGroupByList* GroupBy = nullptr;              // the member's grouping, when it has one
};

class TmvQBPropertiesForm {
 public:
  TmvQBPropertiesForm(WideString className, const TmvPropsFormTarget& target);
  virtual ~TmvQBPropertiesForm() = default;
  TmvQBPropertiesForm(const TmvQBPropertiesForm&) = delete;
  TmvQBPropertiesForm& operator=(const TmvQBPropertiesForm&) = delete;

  // The class name: the section of the form's captions in a language file.
  const WideString& ClassName() const { return className_; }
  const WideString& Caption() const { return caption_; }
  const TmvPropsFormTarget& Target() const { return target_; }
  const std::vector<TmvFormControl>& Controls() const { return controls_; }
  const TmvFormControl* FindControl(WideStringView name) const;

  virtual void LoadProps() = 0;
  // Raises an exception whose message the dialog shows; the form stays.
  virtual void CheckCanClose() {}
  virtual void SaveProps() = 0;

  // --- Values (an unknown name raises EListError) ---
  WideString Text(WideStringView name) const;
  void SetText(WideStringView name, WideStringView text);
  bool Checked(WideStringView name) const;
  // A radio button checked clears the others of its group.
  void SetChecked(WideStringView name, bool checked);
  int ChoiceIndex(WideStringView name) const;
  void SetChoiceIndex(WideStringView name, int index);
  // What a user's click does: toggles a check box or checks a radio button,
  // then lets the form react (one box clearing another).
  void Click(WideStringView name);

  // Enabled: the form's own switch and, when the control names one, its
  // enabling box checked.
  bool Enabled(WideStringView name) const;
  void SetEnabled(WideStringView name, bool enabled);
  bool ReadOnly(WideStringView name) const;
  void SetReadOnly(WideStringView name, bool readOnly);
  // The control that takes the focus when the dialog opens; empty for the first.
  const WideString& FocusControl() const { return focus_; }

 protected:
  void SetCaption(WideString caption) { caption_ = std::move(caption); }
  void SetFocusControl(WideString name) { focus_ = std::move(name); }
  TmvFormControl& AddControl(TmvFormControl control);
  void AddControls(std::initializer_list<TmvFormControl> controls);
  // Runs after Click changed the value of `name`.
  virtual void Clicked(WideStringView /*name*/) {}
  // A text that must be a whole number (of a control that is enabled).
  int CheckedInteger(WideStringView name) const;

 private:
  struct State {
    WideString value;
    bool enabled = true;
    bool readOnly = false;
  };
  State& StateOf(WideStringView name);
  const State& StateOf(WideStringView name) const;

  WideString className_;
  WideString caption_;
  WideString focus_;
  TmvPropsFormTarget target_;
  std::vector<TmvFormControl> controls_;
  std::map<WideString, State, std::less<>> states_;
};

using TmvPropertiesFormFactory = std::function<std::unique_ptr<TmvQBPropertiesForm>(const TmvPropsFormTarget&)>;

// The registry of form classes. Registering a name again replaces it.
void RegisterPropertiesFormClass(WideStringView className, TmvPropertiesFormFactory factory);
bool IsPropertiesFormClassRegistered(WideStringView className);
// The registered class names, in sorted order.
std::vector<WideString> RegisteredPropertiesFormClasses();
// A new form of the class with its values loaded (LoadProps); null for an
// empty or unknown name.
std::unique_ptr<TmvQBPropertiesForm> CreatePropertiesForm(WideStringView className, const TmvPropsFormTarget& target);

}  // namespace mv
