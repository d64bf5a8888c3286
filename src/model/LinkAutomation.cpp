// Links the model makes by itself: from the relations of the metadata and
// from equal field names (each asked of the host first), and the move of
// ON clauses into WHERE when the dialect has no joins in FROM. Also which
// relation a link follows and the cardinality of its ends.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataQualifiedNamesList.h"
#include "metadata/MetadataRelation.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/QueryTree.h"
#include "tree/ExpressionBase.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

TmvQueryBuilderLinkCardinality CardinalityOf(TmvMetadataRelationCardinality value) {
  switch (value) {
    case mrcOne:
      return qblcOne;
    case mrcMany:
      return qblcMany;
    default:
      return qblcUnknown;
  }
}

// A synonym stands for the object it names, through at most 20 synonyms.
TmvMetadataObject* UnderlyingObject(TmvMetadataObject* object) {
  for (int step = 0; step < 20 && object; ++step) {
    auto* synonym = TmvCast<TmvMetadataSynonym>(object);
    TmvMetadataObject* target = synonym ? synonym->GetReferencedObject() : nullptr;
    if (!target) break;
    object = target;
  }
  return object;
}

TmvMetadataField* FieldOf(TmvMetadataObject* object, const TSQLQualifiedName* name) {
  TmvMetadataFieldsList* fields = object ? object->GetFields() : nullptr;
  const int index = fields && name ? fields->FindFieldByName(name) : -1;
  return index >= 0 ? fields->Items(index) : nullptr;
}

TmvMetadataField* FieldOf(TmvDatasource* datasource, const TSQLQualifiedName* name) {
  TmvMetadataFieldsList* fields = datasource ? datasource->GetFields() : nullptr;
  const int index = fields && name ? fields->FindFieldByName(name) : -1;
  return index >= 0 ? fields->Items(index) : nullptr;
}

// Whether the one-part name of a link's end names the relation's field of
// `object`: by name, or by the field's alternate name.
bool NamesField(TmvBaseSQLContext* context, const TSQLQualifiedName* linkName, const TSQLQualifiedName* fieldName,
                TmvMetadataObject* object) {
  if (!linkName || linkName->Items.Count() != 1 || !fieldName) return false;
  if (context->IsQualifiedNamesEqual(linkName, fieldName)) return true;
  TmvMetadataField* field = FieldOf(object, fieldName);
  return field && !field->AltName().empty() && context->CompareTokens(linkName->Token(0), field->AltNameId()) == 0;
}

// The relation of `key` to `child` of one column pair that these names follow.
TmvMetadataRelation* FindRelation(TmvBaseSQLContext* context, TmvMetadataObject* key, TmvMetadataObject* child,
                                  const TSQLQualifiedName* keyName, const TSQLQualifiedName* childName) {
  TmvMetadataRelationsList* relations = key->GetRelations();
  if (!relations) return nullptr;
  for (int i = 0; i < relations->Count(); ++i) {
    TmvMetadataRelation* relation = relations->Items(i);
    if (relation->GetChildMetadataObject() != child) continue;
    if (relation->KeyFields()->Count() != 1 || relation->ChildFields()->Count() != 1) continue;
    if (NamesField(context, keyName, relation->KeyFields()->Items(0), key) &&
        NamesField(context, childName, relation->ChildFields()->Items(0), child))
      return relation;
  }
  return nullptr;
}

}  // namespace

// --- The relation of a link ---

TmvMetadataRelation* TmvLink::GetRelation() const {
  TmvBaseSQLContext* context = SQLContext();
  if (!isSimple_ || !context || !leftDatasource_ || !rightDatasource_) return nullptr;
  TmvMetadataObject* left = leftDatasource_->GetMetadataObject();
  TmvMetadataObject* right = rightDatasource_->GetMetadataObject();
  if (!left || !right) return nullptr;
  if (TmvMetadataRelation* relation = FindRelation(context, left, right, leftField_.get(), rightField_.get()))
    return relation;
  return FindRelation(context, right, left, rightField_.get(), leftField_.get());
}

void TmvLink::CalcCardinality() {
  TmvMetadataRelation* relation = GetRelation();
  if (!relation) {
    ResetCardinality();
    return;
  }
  const bool leftIsKey = leftDatasource_->GetMetadataObject() == relation->GetKeyMetadataObject();
  const TmvQueryBuilderLinkCardinality key = CardinalityOf(relation->KeyCardinality());
  const TmvQueryBuilderLinkCardinality child = CardinalityOf(relation->ChildCardinality());
  if (leftIsKey != relation->ForeignKey()) {
    leftCardinality_ = key;
    rightCardinality_ = child;
  } else {
    leftCardinality_ = child;
    rightCardinality_ = key;
  }
}

void TmvLink::ResetCardinality() {
  leftCardinality_ = qblcUnknown;
  rightCardinality_ = qblcUnknown;
}

// --- Links from the metadata ---

namespace {

// Asks the host about a link from one field to another; true to make it.
bool AllowLink(TmvUnionSubQuery* member, TmvDatasource* from, TmvMetadataField* fromField, TmvDatasource* to,
               TmvMetadataField* toField, TmvMetadataRelation* relation) {
  TmvQueryModelHost* host = member->Host();
  bool allow = true;
  if (host && host->OnLinkCreating) host->OnLinkCreating(host, member, from, fromField, to, toField, relation, allow);
  return allow;
}

void LinkCreated(TmvUnionSubQuery* member, TmvLink* link) {
  TmvQueryModelHost* host = member->Host();
  if (link && host && host->OnLinkCreated) host->OnLinkCreated(host, link);
}

// The links that the relations of `key`'s object to `child`'s make; their count.
int AddRelationLinks(TmvUnionSubQuery* member, TmvDataSourceObject* key, TmvDataSourceObject* child) {
  TmvBaseSQLContext* context = member->SQLContext();
  TmvMetadataObject* keyObject = key->GetMetadataObject();
  if (!context || !keyObject || !keyObject->GetRelations()) return 0;
  TmvMetadataObject* childObject = child->GetMetadataObject();
  const TSQLFromObject* childNode = child->FromObject();
  int made = 0;
  TmvMetadataRelationsList* relations = keyObject->GetRelations();
  for (int r = 0; r < relations->Count(); ++r) {
    TmvMetadataRelation* relation = relations->Items(r);
    const TSQLQualifiedName* childTable = relation->ChildTable();
    const bool toChild =
        (childObject && context->IsQualifiedNamesEqual(childTable, childObject->FullName())) ||
        (childNode && childNode->Object && context->IsQualifiedNamesEqual(childTable, childNode->Object.get()));
    if (!toChild) continue;
    // Without key columns the relation reads the primary key.
    std::vector<const TSQLQualifiedName*> keyNames;
    for (int i = 0; i < relation->KeyFields()->Count(); ++i) keyNames.push_back(relation->KeyFields()->Items(i));
    if (keyNames.empty() && keyObject->GetFields()) {
      TmvMetadataFieldsList* fields = keyObject->GetFields();
      for (int i = 0; i < fields->Count(); ++i)
        if (fields->Items(i)->PrimaryKey()) keyNames.push_back(fields->Items(i)->Name());
    }
    const int pairs = std::min(static_cast<int>(keyNames.size()), relation->ChildFields()->Count());
    for (int i = 0; i < pairs; ++i) {
      const TSQLQualifiedName* childName = relation->ChildFields()->Items(i);
      TmvMetadataField* childField = FieldOf(child, childName);
      TmvMetadataField* keyField = FieldOf(key, keyNames[i]);
      if (!AllowLink(member, child, childField, key, keyField, relation)) continue;
      TmvLink* link = member->AddLink(child, childName, keyNames[i], key);
      if (!link) continue;
      ++made;
      LinkCreated(member, link);
    }
  }
  return made;
}

std::vector<TmvDataSourceObject*> OtherObjects(TmvUnionSubQuery* member, TmvDataSourceObject* object) {
  TmvDatasourceList all;
  member->Datasources()->GetDatasources(all);
  std::vector<TmvDataSourceObject*> others;
  for (TmvDatasource* datasource : all)
    if (auto* other = TmvCast<TmvDataSourceObject>(datasource); other && other != object) others.push_back(other);
  return others;
}

}  // namespace

int TmvUnionSubQuery::AddFKLinksForObject(TmvDataSourceObject* object) {
  if (!object || !Host() || !SQLContext()) return 0;
  TmvUpdateScope update(object);
  std::vector<TmvDataSourceObject*> others = OtherObjects(this, object);
  int made = 0;
  // The others as the far end of the object's relations; those linked so are done.
  for (auto it = others.begin(); it != others.end();) {
    const int count = AddRelationLinks(this, object, *it);
    made += count;
    it = count > 0 ? others.erase(it) : std::next(it);
  }
  // Then the object as the far end of theirs.
  for (TmvDataSourceObject* other : others) made += AddRelationLinks(this, other, object);
  return made;
}

int TmvUnionSubQuery::AddIdenticalFieldsLinksForObject(TmvDataSourceObject* object) {
  if (!object || !Host() || !SQLContext()) return 0;
  TmvUpdateScope update(object);
  TmvMetadataObject* own = UnderlyingObject(object->GetMetadataObject());
  TmvMetadataFieldsList* ownFields = object->GetFields();
  if (!ownFields) return 0;
  int made = 0;
  for (TmvDataSourceObject* other : OtherObjects(this, object)) {
    if (UnderlyingObject(other->GetMetadataObject()) == own) continue;
    TmvMetadataFieldsList* fields = other->GetFields();
    if (!fields) continue;
    for (int i = 0; i < fields->Count(); ++i) {
      TmvMetadataField* field = fields->Items(i);
      const int at = ownFields->FindFieldByName(field->Name());
      if (at < 0) continue;
      TmvMetadataField* ownField = ownFields->Items(at);
      if (FindLink(other, field->Name(), ownField->Name(), object) ||
          FindLink(object, ownField->Name(), field->Name(), other))
        continue;
      if (!AllowLink(this, other, field, object, ownField, nullptr)) continue;
      TmvLink* link = AddLink(other, field->Name(), ownField->Name(), object);
      if (!link) continue;
      ++made;
      LinkCreated(this, link);
    }
  }
  return made;
}

// --- A dialect without joins in FROM ---

void TmvDatasourceGroup::SyntaxProviderChanged() {
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  std::vector<TmvLink*> fromLinks;
  for (TmvLink* link : links_)
    if (link->LinkPlace() == lpFrom) fromLinks.push_back(link);
  if (provider && !provider->IsSupportANSIJoins() && !fromLinks.empty()) {
    TmvUpdateScope update(UnionSubQuery());
    const bool whereMarks = provider->IsSupportOracleJoins() || provider->IsSupportTransactSQLJoins();
    for (TmvLink* link : fromLinks) {
      TmvDatasourceBase* owner = link->JoinOwner();
      TSQLExpressionItem* expression = link->GetLinkExpression();
      if (expression && link->IsSimple()) {
        TastNodeClassRef kind = &TSQLJoinKindInner::StaticClass();
        if (whereMarks && !(link->LeftType() == ltOuter && link->RightType() == ltOuter) && owner &&
            owner->GetJoinKindClass())
          kind = owner->GetJoinKindClass();
        TmvLink* where = AddLinkAST(owner, expression->CloneAs<TSQLExpressionItem>(SQLContext()), false, lpWhere);
        if (where) where->SetJoinKindClass(kind);
      } else if (expression) {
        TmvOwned<TSQLExpressionItem> rest = LoadWhereJoins(expression->CloneAs<TSQLExpressionItem>(SQLContext()));
        if (rest) AddLinkAST(owner, std::move(rest), false, lpWhere);
      }
      if (link->Parent()) link->Parent()->DestroyChild(link);
    }
    for (TmvDatasourceBase* item : items_) item->SetFromSourceJoinKind(nullptr);
    NotifyReorderNeeded();
  }
  for (TmvDatasourceBase* item : std::vector<TmvDatasourceBase*>(items_)) item->SyntaxProviderChanged();
}

}  // namespace mv
