// One FROM entry that is no group: its names, captions, fields and checks,
// and the two kinds that read a sub-query (a derived table, or an object
// that names a common table expression).
#include <algorithm>
#include <unordered_map>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/Datasources.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "model/SubSelectProxy.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"

namespace mv {

MV_DEFINE_CLASS(TmvDatasource, TmvDatasourceBase)
MV_DEFINE_CLASS(TmvDataSourceObject, TmvDatasource)
MV_DEFINE_CLASS(TmvDatasourceQuery, TmvDatasource)

// --- TmvDatasource ---

TmvDatasource::~TmvDatasource() = default;

bool TmvDatasource::CanDestroy() const {
  TmvUnionSubQuery* member = UnionSubQuery();
  if (!member || member->IsDestroying() || !Group() || Group()->IsDestroying()) return true;
  if (beforeDeleteDone_) return deleteAllowed_;
  bool allow = true;
  if (Host() && Host()->OnBeforeDeleteDatasource) Host()->OnBeforeDeleteDatasource(Host(), member, allow, const_cast<TmvDatasource*>(this));
  // A refusal keeps the object; the next request asks again.
  beforeDeleteDone_ = allow;
  deleteAllowed_ = allow;
  return allow;
}

void TmvDatasource::Destroying() {
  if (hookedFields_) hookedFields_->GetOnUpdated().RemoveHandler(this, &TmvDatasource::FieldsListChanged);
  hookedFields_ = nullptr;
  TmvUnionSubQuery* member = UnionSubQuery();
  if (member && !member->IsDestroying() && Group()) {
    TmvUpdateScope update(member);
    Group()->NotifyReorderNeeded();
    member->NotifyDatasourceDestroying(this);
    Group()->ExtractInternal(this);
  } else if (Group()) {
    Group()->ExtractInternal(this);
  }
  TmvDatasourceBase::Destroying();
}

void TmvDatasource::UpdateDatasourceType() {
  TSQLFromSource* node = FromSource();
  TmvMetadataObject* object = node ? node->GetMetadataObject() : nullptr;
  if (!node)
    datasourceType_ = dtOther;
  else if (TmvCast<TSQLFromObject>(node))
    datasourceType_ = TmvCast<TmvMetadataTable>(object)       ? dtTable
                      : TmvCast<TmvMetadataView>(object)      ? dtView
                      : TmvCast<TmvMetadataProcedure>(object) ? dtStoredProc
                                                              : dtOther;
  else if (TmvCast<TSQLFromQuery>(node))
    datasourceType_ = dtSubQuery;
  else if (TmvCast<TSQLFromFunction>(node) && TmvCast<TmvMetadataProcedure>(object))
    datasourceType_ = dtFunction;
  else
    datasourceType_ = dtOther;
}

// --- Names ---

const TastTokenIdentifier* TmvDatasource::GetAliasAST() const {
  TSQLFromSource* node = FromSource();
  return node && node->Alias ? node->Alias->Name.get() : nullptr;
}

WideString TmvDatasource::GetAlias() const {
  const TastTokenIdentifier* alias = GetAliasAST();
  return alias ? alias->Token : WideString();
}

void TmvDatasource::SetAlias(const WideString& text) {
  TSQLFromSource* node = FromSource();
  if (!node || text == GetAlias()) return;
  if (text.empty()) {
    node->Alias.Reset();
  } else if (node->Alias && node->Alias->Name) {
    node->Alias->Name->SetToken(text);
    node->Alias->Name->Quoted = false;
  } else {
    auto alias = TastCreate<TSQLAliasObjectAlias>(SQLContext());
    alias->Name.Set(TastCreate<TastTokenIdentifier>(SQLContext(), text, false));
    node->Alias.Set(std::move(alias));
  }
  // Column prefixes everywhere in the SELECT print differently now.
  UnionSubQuery()->NotifySQLUpdatedRecursive();
  UpdateCaption();
}

WideString TmvDatasource::GetObjectNameInQuery() {
  TSQLFromSource* node = FromSource();
  if (!node || !SQLContext()) return {};
  TSQLBuilderFast& builder = SQLContext()->SQLBuilderExpression();
  if (TmvMetadataObject* object = node->GetMetadataObject()) {
    if (builder.UseAltNames() && !object->AltName().empty()) return const_cast<TastTokenIdentifier*>(object->AltNameId())->SimpleSQL(builder);
    TmvOwned<TSQLQualifiedName> name = object->GetNameAsObject(true, true, builder.ObjectPrefixSkipping(), true);
    return name ? name->GetQualifiedName() : WideString();
  }
  return node->GetSimpleExpression(builder);
}

WideString TmvDatasource::GetNameInQuery() {
  const WideString alias = GetAlias();
  return alias.empty() ? GetObjectNameInQuery() : alias;
}

WideString TmvDatasource::GetDataSourceName() {
  const WideString alias = GetAlias();
  return alias.empty() ? TmvDatasourceBase::GetDataSourceName() : alias;
}

void TmvDatasource::UpdateCaption() {
  WideString caption = GetDataSourceName();
  if (Host() && Host()->Options.TableChecksCountInCaption && !checkedFields_.empty()) {
    const auto others = std::count_if(checkedFields_.begin(), checkedFields_.end(), [](auto* f) { return f; });
    const bool all = others < static_cast<long>(checkedFields_.size());
    WideString prefix;
    if (!all)
      prefix = u"(" + IntToWide(others) + u")";
    else if (others == 0)
      prefix = u"(*)";
    else
      prefix = u"(*" + IntToWide(others) + u")";
    caption = prefix + caption;
  }
  if (Host() && Host()->OnCustomizeDatasourceCaption)
    Host()->OnCustomizeDatasourceCaption(Host(), UnionSubQuery(), this, caption);
  SetCaption(caption);
}

void TmvDatasource::SetCaption(const WideString& caption) {
  caption_ = caption;
  if (auto* control = dynamic_cast<ImvDatasourceControl*>(GetControls(0))) control->SetCaption(caption);
}

// --- Fields ---

TmvMetadataFieldsList* TmvDatasource::GetFields() const { return FromSource() ? FromSource()->FieldsList() : nullptr; }

TmvMetadataObject* TmvDatasource::GetMetadataObject() const {
  return FromSource() ? FromSource()->GetMetadataObject() : nullptr;
}

namespace {

const WideString& SortName(const TmvMetadataField* field, WideString& scratch) {
  if (!field->AltName().empty()) return field->AltName();
  scratch = field->NameStrNotQuoted();
  return scratch;
}

int CompareByName(const TmvMetadataField* a, const TmvMetadataField* b) {
  WideString x, y;
  return WideCompareText(SortName(a, x), SortName(b, y));
}

}  // namespace

void TmvDatasource::DoCustomizeDatasourceFieldsList() {
  TmvMetadataFieldsList* fields = GetFields();
  if (!fields || !Host()) return;
  const TmvModelOptions& options = Host()->Options;
  const bool shortDescriptions = SQLContext()->SQLBuilderExpression().UseAltNames();
  fields->BeginUpdate();
  auto field = [](const TmvMetadataCollectionItemBase* item) { return static_cast<const TmvMetadataField*>(item); };
  switch (options.SortType) {
    case flsNone:
      if (TmvMetadataObject* object = GetMetadataObject(); object && object->GetFields()) {
        // Metadata order (the fields are copies of the object's, names and
        // all); fields the object does not know keep their order behind.
        TmvMetadataFieldsList* order = object->GetFields();
        std::unordered_map<WideString, int> ranks;
        for (int i = 0; i < order->Count(); ++i) ranks.emplace(order->Items(i)->NameStr(), i);
        auto rank = [&](const TmvMetadataField* f) {
          auto found = ranks.find(f->NameStr());
          return found == ranks.end() ? order->Count() : found->second;
        };
        bool sorted = true;
        for (int i = 1; i < fields->Count() && sorted; ++i) sorted = rank(fields->Items(i - 1)) <= rank(fields->Items(i));
        if (!sorted) fields->Sort([&](auto* a, auto* b) { return rank(field(a)) - rank(field(b)); });
      }
      break;
    case flsName:
      fields->Sort([&](auto* a, auto* b) { return CompareByName(field(a), field(b)); });
      break;
    case flsDescription:
      fields->Sort([&](auto* a, auto* b) {
        const TmvMetadataField* x = field(a);
        const TmvMetadataField* y = field(b);
        const int byDescription = shortDescriptions ? WideCompareText(x->ShortDescription(), y->ShortDescription())
                                                    : WideCompareText(x->LongDescription(), y->LongDescription());
        return byDescription != 0 ? byDescription : CompareByName(x, y);
      });
      break;
  }
  if (options.KeyFieldsFirst)
    fields->Sort([&](auto* a, auto* b) { return int(!field(a)->PrimaryKey()) - int(!field(b)->PrimaryKey()); });
  fields->EndUpdate();
  if (Host()->OnCustomizeDatasourceFieldsList) Host()->OnCustomizeDatasourceFieldsList(Host(), UnionSubQuery(), this);
}

void TmvDatasource::LoadFromAST(TmvOwned<TSQLFromSource> node) {
  TmvUpdateScope update(this);
  TmvDatasourceBase::LoadFromAST(std::move(node));
  DoCustomizeDatasourceFieldsList();
  if (TmvMetadataFieldsList* fields = GetFields()) {
    hookedFields_ = fields;
    fields->GetOnUpdated().AddHandler(this, &TmvDatasource::FieldsListChanged);
  }
  LoadSubQueries(FromSource());
  UpdateDatasourceType();
  UpdateCaption();
}

// --- The box ---

void TmvDatasource::SetLeft(int value) {
  if (left_ == value) return;
  left_ = value;
  BoxChanged();
}

void TmvDatasource::SetTop(int value) {
  if (top_ == value) return;
  top_ = value;
  BoxChanged();
}

void TmvDatasource::SetWidth(int value) {
  if (width_ == value) return;
  width_ = value;
  BoxChanged();
}

void TmvDatasource::SetHeight(int value) {
  if (height_ == value) return;
  height_ = value;
  BoxChanged();
}

void TmvDatasource::SetCollapsed(bool value) {
  if (collapsed_ == value) return;
  collapsed_ = value;
  BoxChanged();
}

void TmvDatasource::BoxChanged() {
  if (ImvControl* control = GetControls(0)) control->UpdateControlVisualParams(this);
}

void TmvDatasource::FieldsListChanged(TmvObject*) {
  if (IsDestroying()) return;
  if (auto* control = dynamic_cast<ImvDatasourceControl*>(GetControls(0))) {
    control->ReloadFieldsList();
    control->SetOptimalHeight();
  } else {
    height_ = 0;
  }
  UpdateChecks();
  TmvUpdateScope update(this);
  if (IsCleanDeletedFields()) CleanDeletedFields();
  NotifySQLUpdated();
}

void TmvDatasource::CleanDeletedFields() {
  TmvMetadataFieldsList* fields = GetFields();
  std::vector<WideString> present;
  for (int i = 0; fields && i < fields->Count(); ++i) present.push_back(fields->Items(i)->NameStrNotQuoted());
  std::vector<WideString> deleted;
  if (hasLastFields_)
    for (const WideString& name : lastFields_)
      if (std::none_of(present.begin(), present.end(), [&](const WideString& p) { return WideSameText(p, name); }))
        deleted.push_back(name);
  TSQLFromSource* source = FromSource();
  if (!deleted.empty() && UnionSubQuery() && source) {
    auto refers = [&](TastNodeBase* node) {
      TSQLObjectColumnList columns;
      node->GetReferencedColumnsRecursive(columns);
      return std::any_of(columns.begin(), columns.end(), [&](TSQLObjectColumn* column) {
        if (column->FromSource != source || column->Items.Count() == 0) return false;
        const WideString& name = column->Token(0)->Token;
        return std::any_of(deleted.begin(), deleted.end(), [&](const WideString& d) { return WideSameText(d, name); });
      });
    };
    // Rows of a vanished column go with their conditions; conditions of
    // other rows that name one are emptied.
    if (TmvSelectList* list = UnionSubQuery()->SelectList()) {
      TmvUpdateScope update(list);
      for (int i = list->Count() - 1; i >= 0; --i) {
        TmvSelectItem* row = list->Items(i);
        if (row->Expression() && refers(row->Expression())) {
          list->Delete(i);
          continue;
        }
        for (int c = 0; c < row->ConditionsListCount(); ++c)
          if (row->Conditions(c) && refers(row->Conditions(c))) row->SetASTCondition(c, nullptr);
      }
    }
  }
  lastFields_ = std::move(present);
  hasLastFields_ = true;
}

void TmvDatasource::RefreshMetadata() {
  TSQLFromSource* node = FromSource();
  if (!node || !SQLContext() || !SQLContext()->SyntaxProvider() || IsDestroying()) return;
  TmvMetadataFieldsList* fields = GetFields();
  fields->BeginUpdate();
  node->RestoreColumnPrefixRecursive(true);
  std::vector<TSQLWithClauseItem*> cteList;
  std::vector<TSQLFromSource*> fromSources;
  GatherPrepareAndFixupContext(cteList, fromSources, true);
  node->PrepareAndFixupRecursive(cteList, fromSources);
  DoCustomizeDatasourceFieldsList();
  fields->EndUpdate();
  UpdateDatasourceType();
}

void TmvDatasource::SyntaxProviderChanged() {
  RefreshMetadata();
  if (auto* control = dynamic_cast<ImvDatasourceControl*>(GetControls(0))) control->SetOptimalHeight();
}

// --- Checks ---

bool TmvDatasource::IsFieldSelected(const TmvMetadataField* field) const {
  return std::find(checkedFields_.begin(), checkedFields_.end(), field) != checkedFields_.end();
}

void TmvDatasource::UpdateChecks() {
  checkedFields_.clear();
  TSQLFromSource* node = FromSource();
  TmvSelectList* list = UnionSubQuery() ? UnionSubQuery()->SelectList() : nullptr;
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  if (node && list && provider) {
    // The selected rows of this datasource: "table.*" checks the asterisk
    // row, a column the field of its name.
    if (provider->IsSupportAllTableFieldsSelection() && !Host()->Options.HideAsteriskItem)
      for (int i = 0; i < list->Count(); ++i) {
        TmvSelectItem* row = list->Items(i);
        if (row->Select() && row->ExpressionFromSource() == node &&
            TmvCast<TSQLSelectItemAllTableColumns>(row->Expression())) {
          checkedFields_.push_back(nullptr);
          break;
        }
      }
    TmvMetadataFieldsList* fields = GetFields();
    for (int f = 0; fields && f < fields->Count(); ++f) {
      TmvMetadataField* field = fields->Items(f);
      if (!field->Name()) continue;
      for (int i = 0; i < list->Count(); ++i) {
        TmvSelectItem* row = list->Items(i);
        if (row->Select() && row->ExpressionFromSource() == node && row->ExpressionFieldName() &&
            SQLContext()->CompareQualifiedNames(row->ExpressionFieldName(), field->Name()) == 0) {
          checkedFields_.push_back(field);
          break;
        }
      }
    }
  }
  if (auto* control = dynamic_cast<ImvDatasourceControl*>(GetControls(0))) control->UpdateChecksOnFields();
  UpdateCaption();
}

void TmvDatasource::CheckAllFields() {
  TmvSelectList* list = UnionSubQuery() ? UnionSubQuery()->SelectList() : nullptr;
  TmvMetadataFieldsList* fields = GetFields();
  if (!list || !fields) return;
  TmvUpdateScope update(list);
  for (int i = 0; i < fields->Count(); ++i) {
    const TSQLQualifiedName* name = fields->Items(i)->Name();
    if (!name) continue;
    TmvSelectItem* row = list->FindField(this, name);
    if (!row) row = list->AddField(this, name);
    if (row && row->IsCanSelect()) row->SetSelect(true);
  }
}

void TmvDatasource::UncheckAllFields() {
  TmvSelectList* list = UnionSubQuery() ? UnionSubQuery()->SelectList() : nullptr;
  TmvMetadataFieldsList* fields = GetFields();
  if (!list || !fields) return;
  TmvUpdateScope update(list);
  for (int i = 0; i < fields->Count(); ++i)
    if (const TSQLQualifiedName* name = fields->Items(i)->Name()) list->RemoveFields(this, name);
}

void TmvDatasource::SetFieldChecked(TmvMetadataField* field, bool checked) {
  TmvSelectList* list = UnionSubQuery() ? UnionSubQuery()->SelectList() : nullptr;
  if (!list || (field && !field->Name())) return;
  const TSQLQualifiedName* name = field ? field->Name() : nullptr;
  TmvUpdateScope update(list);
  if (!checked) {
    list->RemoveFields(this, name);
    return;
  }
  TmvSelectItem* row = list->FindField(this, name);
  if (!row) row = list->AddField(this, name);
  if (row && row->IsCanSelect() && !row->Select()) row->SetSelectUI(true);
}

// --- TmvDataSourceObject ---

TSQLFromObject* TmvDataSourceObject::FromObject() const { return TmvCast<TSQLFromObject>(FromSource()); }

void TmvDataSourceObject::LoadFromAST(TmvOwned<TSQLFromSource> node) {
  TmvUpdateScope update(this);
  TmvDatasource::LoadFromAST(std::move(node));
  BindToCte();
  if (IsCleanDeletedFields()) CleanDeletedFields();  // the first look
}

void TmvDataSourceObject::BindToCte() {
  UnhookCte();
  TSQLFromObject* object = FromObject();
  TSQLWithClauseItem* item = object ? object->WithItem : nullptr;
  auto* proxy = item ? dynamic_cast<TmvSubSelectStatementProxy*>(item->Query.get()) : nullptr;
  if (!proxy || !proxy->SubQuery()) return;
  cteSubQuery_ = proxy->SubQuery();
  cteSubQuery_->OnDestroying().AddHandler(this, &TmvDataSourceObject::CteSubQueryDestroying);
  cteFields_ = item->FieldsList();
  if (cteFields_) {
    cteFields_->GetOnUpdated().AddHandler(this, &TmvDataSourceObject::CteFieldsChanged);
    cteFields_->GetOnDestroying().AddHandler(TmvHandlerId(this, 2), [this](TmvObject*) { cteFields_ = nullptr; });
  }
}

void TmvDataSourceObject::UnhookCte() {
  if (cteFields_) {
    cteFields_->GetOnUpdated().RemoveHandler(this, &TmvDataSourceObject::CteFieldsChanged);
    cteFields_->GetOnDestroying().RemoveHandler(TmvHandlerId(this, 2));
  }
  if (cteSubQuery_) cteSubQuery_->OnDestroying().RemoveHandler(this, &TmvDataSourceObject::CteSubQueryDestroying);
  cteFields_ = nullptr;
  cteSubQuery_ = nullptr;
}

void TmvDataSourceObject::Destroying() {
  UnhookCte();
  TmvDatasource::Destroying();
}

void TmvDataSourceObject::CteFieldsChanged(TmvObject*) {
  TmvMetadataFieldsList* fields = GetFields();
  if (!fields || !cteFields_ || fields == cteFields_) return;
  fields->BeginUpdate();
  fields->Assign(cteFields_);
  DoCustomizeDatasourceFieldsList();
  fields->NotifyUpdated();
  fields->EndUpdate();
}

void TmvDataSourceObject::CteSubQueryDestroying(TmvObject*) {
  // The object was loaded from the expression: it goes with it.
  UnhookCte();
  if (!IsDestroying()) RequestDestroy();
}

WideString TmvDataSourceObject::GetObjectNameInQuery() {
  if (cteSubQuery_ && cteSubQuery_->CteItem() && cteSubQuery_->CteItem()->Name && SQLContext())
    return cteSubQuery_->CteItem()->Name->SimpleSQL(SQLContext()->SQLBuilderExpression());
  return TmvDatasource::GetObjectNameInQuery();
}

WideString TmvDataSourceObject::GetDataSourceName() {
  TSQLFromObject* node = FromObject();
  if (!node || !node->Object || !SQLContext()) return TmvDatasource::GetDataSourceName();
  TSQLBuilderFast& builder = SQLContext()->SQLBuilderExpression();
  const WideString alias = GetAlias();
  if (!alias.empty()) return alias + u" (" + node->GetSimpleExpression(builder) + u")";
  if (TmvMetadataObject* object = node->GetMetadataObject()) {
    if (Host() && Host()->Options.UseAltNames && !object->AltName().empty()) return node->GetSimpleExpression(builder);
    WideString caption = object->NameStrNotQuoted();
    TmvOwned<TSQLQualifiedName> prefix = object->GetNameAsObject(true, true, builder.ObjectPrefixSkipping(), false);
    if (prefix && prefix->Items.Count() > 0) caption += u" (" + prefix->GetQualifiedNameWithoutQuotes() + u")";
    return caption;
  }
  TSQLDatabaseObject* name = node->Object.get();
  if (name->Items.Count() < 2) return name->GetQualifiedNameWithoutQuotes();
  TmvOwned<TSQLQualifiedName> rest = name->GetNameWithoutNames(1);
  return name->Token(0)->Token + u" (" + rest->GetQualifiedNameWithoutQuotes() + u")";
}

void TmvDataSourceObject::RenameObject(const TastTokenIdentifier* name) {
  TSQLFromObject* node = FromObject();
  if (!node || !node->Object || !name) return;
  node->Object->Clear();
  node->Object->AddName(name->CloneAs<TastToken>(SQLContext()));
  NotifySQLUpdated();
  UpdateCaption();
}

// --- TmvDatasourceQuery ---

void TmvDatasourceQuery::LoadFromAST(TmvOwned<TSQLFromSource> node) {
  TmvUpdateScope update(this);
  TmvDatasource::LoadFromAST(std::move(node));
  auto* query = TmvCast<TSQLFromQuery>(FromSource());
  auto* proxy = query ? dynamic_cast<TmvSubSelectStatementProxy*>(query->SubQuery.get()) : nullptr;
  subQuery_ = proxy ? proxy->SubQuery() : nullptr;
  if (!subQuery_) return;
  subQuery_->Fields()->GetOnUpdated().AddHandler(this, &TmvDatasourceQuery::SubqueryFieldsChanged);
  subQuery_->OnDestroying().AddHandler(TmvHandlerId(this, 3), [this](TmvObject*) { subQuery_ = nullptr; });
  CleanDeletedFields();  // the first look
}

void TmvDatasourceQuery::Destroying() {
  if (subQuery_) {
    subQuery_->Fields()->GetOnUpdated().RemoveHandler(this, &TmvDatasourceQuery::SubqueryFieldsChanged);
    subQuery_->OnDestroying().RemoveHandler(TmvHandlerId(this, 3));
    subQuery_ = nullptr;
  }
  TmvDatasource::Destroying();
}

void TmvDatasourceQuery::SubqueryFieldsChanged(TmvObject*) { ReloadFieldsFromUnderlyingSubquery(); }

void TmvDatasourceQuery::RefreshMetadata() { ReloadFieldsFromUnderlyingSubquery(); }

void TmvDatasourceQuery::ReloadFieldsFromUnderlyingSubquery() {
  TmvMetadataFieldsList* fields = GetFields();
  if (!fields || !subQuery_ || IsDestroying()) return;
  fields->BeginUpdate();
  fields->Assign(subQuery_->Fields());
  // An explicit column list names the fields; it is made as long as they are.
  if (TastNodeWithList* names = FromSource()->ColumnNames.get()) {
    for (int i = 0; i < fields->Count(); ++i) {
      TmvMetadataField* field = fields->Items(i);
      if (i < names->Items.Count()) {
        TastNode* name = names->Items.Item(i);
        if (auto* alias = TmvCast<TSQLAliasExpression>(name))
          field->SetNameAlias(alias);
        else if (auto* token = TmvCast<TastTokenIdentifier>(name))
          field->SetNameToken(token);
      } else if (field->Name() && field->Name()->Items.Count() > 0) {
        auto alias = TastCreate<TSQLAliasExpression>(SQLContext());
        alias->Name.Set(field->Name()->Token(0)->CloneAs<TastToken>(SQLContext()));
        names->Items.Add(std::move(alias));
      }
    }
    while (names->Items.Count() > fields->Count()) names->Items.Delete(names->Items.Count() - 1);
  }
  DoCustomizeDatasourceFieldsList();
  fields->NotifyUpdated();
  fields->EndUpdate();
}

}  // namespace mv
