#include "frontend/PropertiesForm.h"

#include <mutex>

#include "support/Exceptions.h"

namespace mv {

TmvQBPropertiesForm::TmvQBPropertiesForm(WideString className, const TmvPropsFormTarget& target)
    : className_(std::move(className)), target_(target) {}

const TmvFormControl* TmvQBPropertiesForm::FindControl(WideStringView name) const {
  for (const TmvFormControl& control : controls_)
    if (control.Name == name) return &control;
  return nullptr;
}

TmvFormControl& TmvQBPropertiesForm::AddControl(TmvFormControl control) {
  states_[control.Name].value = control.Default;
  controls_.push_back(std::move(control));
  return controls_.back();
}

void TmvQBPropertiesForm::AddControls(std::initializer_list<TmvFormControl> controls) {
  for (const TmvFormControl& control : controls) AddControl(control);
}

TmvQBPropertiesForm::State& TmvQBPropertiesForm::StateOf(WideStringView name) {
  auto found = states_.find(name);
  if (found == states_.end()) throw EListError(u"Form " + className_ + u" has no control " + WideString(name));
  return found->second;
}

const TmvQBPropertiesForm::State& TmvQBPropertiesForm::StateOf(WideStringView name) const {
  return const_cast<TmvQBPropertiesForm*>(this)->StateOf(name);
}

WideString TmvQBPropertiesForm::Text(WideStringView name) const { return StateOf(name).value; }
void TmvQBPropertiesForm::SetText(WideStringView name, WideStringView text) { StateOf(name).value = text; }
bool TmvQBPropertiesForm::Checked(WideStringView name) const { return !StateOf(name).value.empty(); }

void TmvQBPropertiesForm::SetChecked(WideStringView name, bool checked) {
  StateOf(name).value = checked ? u"1" : u"";
  const TmvFormControl* control = FindControl(name);
  if (!checked || !control || control->Kind != TmvFormControlKind::Radio) return;
  for (const TmvFormControl& other : controls_)
    if (other.Kind == TmvFormControlKind::Radio && other.Group == control->Group && other.Name != name)
      StateOf(other.Name).value.clear();
}

int TmvQBPropertiesForm::ChoiceIndex(WideStringView name) const {
  int64_t index = 0;
  return TryStrToInt(Text(name), index) ? int(index) : 0;
}

void TmvQBPropertiesForm::SetChoiceIndex(WideStringView name, int index) { SetText(name, IntToWide(index)); }

void TmvQBPropertiesForm::Click(WideStringView name) {
  const TmvFormControl* control = FindControl(name);
  const bool radio = control && control->Kind == TmvFormControlKind::Radio;
  SetChecked(name, radio || !Checked(name));
  Clicked(name);
}

bool TmvQBPropertiesForm::Enabled(WideStringView name) const {
  if (!StateOf(name).enabled) return false;
  const TmvFormControl* control = FindControl(name);
  if (!control || control->EnabledBy.empty()) return true;
  return Checked(control->EnabledBy) && Enabled(control->EnabledBy);
}

void TmvQBPropertiesForm::SetEnabled(WideStringView name, bool enabled) { StateOf(name).enabled = enabled; }
bool TmvQBPropertiesForm::ReadOnly(WideStringView name) const { return StateOf(name).readOnly; }
void TmvQBPropertiesForm::SetReadOnly(WideStringView name, bool readOnly) { StateOf(name).readOnly = readOnly; }

int TmvQBPropertiesForm::CheckedInteger(WideStringView name) const {
  int64_t value = 0;
  const WideString text = WideTrim(Text(name));
  if (!TryStrToInt(text, value) || value < INT32_MIN || value > INT32_MAX)
    throw EConvertError(u"'" + text + u"' is not a valid integer value");
  return int(value);
}

namespace {

struct FormRegistry {
  std::mutex mutex;
  std::map<WideString, TmvPropertiesFormFactory, std::less<>> factories;
};

FormRegistry& Registry() {
  static FormRegistry registry;
  return registry;
}

}  // namespace

void RegisterPropertiesFormClass(WideStringView className, TmvPropertiesFormFactory factory) {
  std::lock_guard lock(Registry().mutex);
  Registry().factories[WideString(className)] = std::move(factory);
}

bool IsPropertiesFormClassRegistered(WideStringView className) {
  std::lock_guard lock(Registry().mutex);
  return Registry().factories.count(className) > 0;
}

std::vector<WideString> RegisteredPropertiesFormClasses() {
  std::lock_guard lock(Registry().mutex);
  std::vector<WideString> names;
  for (const auto& entry : Registry().factories) names.push_back(entry.first);
  return names;
}

std::unique_ptr<TmvQBPropertiesForm> CreatePropertiesForm(WideStringView className, const TmvPropsFormTarget& target) {
  TmvPropertiesFormFactory factory;
  {
    std::lock_guard lock(Registry().mutex);
    auto found = Registry().factories.find(className);
    if (found == Registry().factories.end()) return nullptr;
    factory = found->second;
  }
  std::unique_ptr<TmvQBPropertiesForm> form = factory(target);
  form->LoadProps();
  return form;
}

}  // namespace mv
