#include "component/ParametersList.h"

#include "component/QueryBuilder.h"
#include "frontend/SQLContext.h"
#include "support/Exceptions.h"
#include "tree/Expressions.h"

namespace mv {

void TmvParametersList::MakeValid() {
  // Reading the result tree reloads the list.
  if (!valid_ && builder_) builder_->GenerateResultQueryAST();
}

int TmvParametersList::GetCount() {
  MakeValid();
  return static_cast<int>(items_.size());
}

const TmvParameter& TmvParametersList::GetItem(int index) {
  MakeValid();
  if (index < 0 || index >= static_cast<int>(items_.size()))
    throw EListError(WideFormat(u"List index out of bounds (%d)", {index}));
  return *items_[index];
}

void TmvParametersList::SetParametersInvalid() {
  valid_ = false;
  SetParametersInvalidInternal();
}

void TmvParametersList::ReloadParametersListFromAST(TastNodeBase* node) {
  items_.clear();
  if (node) {
    auto add = [this](TastNodeBase* each) {
      auto* parameter = TmvCast<TSQLExpressionParameter>(each);
      if (!parameter) return;
      TSQLBuilder& builder = parameter->SQLContext()->SQLBuilderExpressionNonQuoted();
      auto item = std::make_unique<TmvParameter>();
      if (parameter->Prefix) item->Prefix = parameter->Prefix->SimpleSQL(builder);
      if (parameter->Tail) item->Tail = parameter->Tail->SimpleSQL(builder);
      item->DataType = static_cast<uint8_t>(parameter->ExpressionType);
      item->Name = parameter->Name;
      item->ColumnName = parameter->ColumnName;
      item->ObjectName = parameter->ObjectName;
      item->MetadataObject = parameter->MetadataObject;
      item->Field = parameter->Field;
      item->Index = parameter->Index;
      items_.push_back(std::move(item));
    };
    add(node);
    node->TraverseASTTreeDepthFirst(add);
  }
  valid_ = true;
}

}  // namespace mv
