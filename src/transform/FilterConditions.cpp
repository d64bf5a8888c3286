#include "transform/FilterConditions.h"

#include <cstring>
#include <pugixml.hpp>

#include "support/Exceptions.h"
#include "transform/OutputColumns.h"

namespace mv {

MV_DEFINE_CLASS(TmvFilterCondition, TmvUpdatablePersistent)
MV_DEFINE_CLASS(TmvFilterColumnCondition, TmvFilterCondition)
MV_DEFINE_CLASS(TmvFilterConditionJunction, TmvFilterCondition)

namespace {

constexpr WideStringView kColumnMacro = u"{column}";

void SetAttribute(pugi::xml_node element, const char* name, const WideString& value) {
  element.append_attribute(name).set_value(UTF8Encode(value).c_str());
}

WideString Attribute(pugi::xml_node element, const char* name) {
  return UTF8Decode(element.attribute(name).as_string());
}

}  // namespace

// --- Column conditions ---

TmvFilterColumnCondition::TmvFilterColumnCondition(TmvOutputColumn* column, WideString text)
    : column_(column), text_(std::move(text)) {
  if (column_) columnExpression_ = column_->GetExpressionForFiltration();
}

void TmvFilterColumnCondition::SetColumn(TmvOutputColumn* column) {
  column_ = column;
  columnExpression_ = column ? column->GetExpressionForFiltration() : WideString();
  NotifyUpdated();
}

WideString TmvFilterColumnCondition::GetCondition() const {
  if (!column_) return text_;
  WideString result = text_;
  const size_t at = result.find(kColumnMacro);
  if (at != WideString::npos) result.replace(at, kColumnMacro.size(), column_->GetExpressionForFiltration());
  return result;
}

void TmvFilterColumnCondition::Write(pugi::xml_node parent) const {
  pugi::xml_node element = parent.append_child("column_condition");
  if (column_) SetAttribute(element, "column", column_->OriginalName());
  SetAttribute(element, "expression", text_);
}

// --- Junctions ---

TmvFilterCondition* TmvFilterConditionJunction::Add(TmvOwned<TmvFilterCondition> condition) {
  return Insert(Count(), std::move(condition));
}

TmvFilterCondition* TmvFilterConditionJunction::Insert(int index, TmvOwned<TmvFilterCondition> condition) {
  if (!condition) throw EmvQueryBuilderError(u"A junction cannot hold a null condition");
  if (index < 0 || index > Count()) throw EListError(u"List index out of bounds (" + IntToWide(index) + u")");
  TmvFilterCondition* result = condition.get();
  result->SetParent(this);
  items_.insert(items_.begin() + index, std::move(condition));
  NotifyUpdated();
  return result;
}

void TmvFilterConditionJunction::Delete(int index) {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToWide(index) + u")");
  TmvOwned<TmvFilterCondition> gone = std::move(items_[static_cast<size_t>(index)]);
  items_.erase(items_.begin() + index);
  gone->SetParent(nullptr);
  gone.reset();
  NotifyUpdated();
}

int TmvFilterConditionJunction::Remove(const TmvFilterCondition* condition) {
  const int index = IndexOf(condition);
  if (index >= 0) Delete(index);
  return index;
}

int TmvFilterConditionJunction::IndexOf(const TmvFilterCondition* condition) const {
  for (int i = 0; i < Count(); ++i)
    if (items_[static_cast<size_t>(i)].get() == condition) return i;
  return -1;
}

void TmvFilterConditionJunction::Clear() {
  if (items_.empty()) return;
  for (auto& item : items_) item->SetParent(nullptr);
  items_.clear();
  NotifyUpdated();
}

TmvFilterCondition* TmvFilterConditionJunction::Items(int index) const {
  if (index < 0 || index >= Count()) throw EListError(u"List index out of bounds (" + IntToWide(index) + u")");
  return items_[static_cast<size_t>(index)].get();
}

WideString TmvFilterConditionJunction::GetCondition() const {
  if (items_.empty()) return {};
  WideString result;
  for (size_t i = 0; i < items_.size(); ++i) {
    if (i > 0) result += operator_ == jtAnd ? u" and " : u" or ";
    result += u"(" + items_[i]->GetCondition() + u")";
  }
  return not_ ? u"not (" + result + u")" : result;
}

void TmvFilterConditionJunction::Write(pugi::xml_node parent) const {
  pugi::xml_node element = parent.append_child("junction");
  element.append_attribute("operator").set_value(operator_ == jtAnd ? "and" : "or");
  for (const auto& item : items_) item->Write(element);
}

void TmvFilterConditionJunction::Read(pugi::xml_node element, TmvOutputColumnsList* columns) {
  TmvUpdateBatch batch(*this);
  Clear();
  SetOperator(std::strcmp(element.attribute("operator").as_string(), "and") == 0 ? jtAnd : jtOr);
  for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    if (std::strcmp(child.name(), "column_condition") == 0) {
      TmvOutputColumn* column = nullptr;
      if (child.attribute("column") && columns)
        column = columns->FindColumnByOriginalName(Attribute(child, "column"));
      Add(TmvCreate<TmvFilterColumnCondition>(column, Attribute(child, "expression")));
    } else if (std::strcmp(child.name(), "junction") == 0) {
      auto junction = TmvCreate<TmvFilterConditionJunction>();
      junction->Read(child, columns);
      Add(std::move(junction));
    }
  }
}

// --- Factory ---

TmvOwned<TmvFilterConditionJunction> TmvFilterFactory::Conjunction() {
  return TmvCreate<TmvFilterConditionJunction>(jtAnd);
}

TmvOwned<TmvFilterConditionJunction> TmvFilterFactory::Disjunction() {
  return TmvCreate<TmvFilterConditionJunction>(jtOr);
}

}  // namespace mv
