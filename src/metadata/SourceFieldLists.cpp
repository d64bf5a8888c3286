// The columns each kind of FROM source offers, as the fix-up asks for them:
// a with item's, a metadata object's, a derived table's, or the server's
// answer for the source's text. Sources never ask a server while the
// container works offline, nor without a metadata provider to ask.
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataParameter.h"
#include "tree/FromClause.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

// Whether the server may be asked for the columns of a statement.
bool MayAskServer(const TmvBaseSQLContext* context) {
  const TmvMetadataContainer* container = context->MetadataContainer();
  return context->MetadataProvider() && context->SyntaxProvider() && !(container && container->WorkOffline());
}

}  // namespace

void TSQLFromSource::SetFieldsList(const TmvMetadataFieldsList* list) {
  if (list != FieldsList()) FieldsList()->Assign(list);
}

void TSQLFromSource::CalcFieldsList(const TSQLWithClauseItemList&, const TSQLFromSourceList&,
                                    TmvConnection* connection) {
  TmvMetadataFieldsList* fields = FieldsList();
  fields->Clear();
  TmvBaseSQLContext* context = SQLContext();
  if (!MayAskServer(context)) return;
  const WideString expression = GetSimpleExpression(context->SQLBuilderExpressionForServer());
  if (expression.empty()) return;
  context->LoadFieldsForQuery(connection, context->SyntaxProvider()->GetQueryToLoadFieldsForObject(u"", expression),
                              *fields);
}

void TSQLFromObject::CalcFieldsList(const TSQLWithClauseItemList& withItems, const TSQLFromSourceList& fromSources,
                                    TmvConnection* connection) {
  if (WithItem) {
    SetFieldsList(WithItem->FieldsList());
    return;
  }
  if (TmvMetadataObject* object = GetMetadataObject()) {
    if (!object->GetFields()->Loaded()) object->LoadFieldsOnDemand(connection);
    SetFieldsList(object->GetFields());
    return;
  }
  TSQLFromSource::CalcFieldsList(withItems, fromSources, connection);
}

void TSQLFromQuery::CalcFieldsList(const TSQLWithClauseItemList&, const TSQLFromSourceList&, TmvConnection*) {
  TmvMetadataFieldsList* fields = FieldsList();
  fields->Clear();
  const TSQLSubQuerySelectExpression* first = SubQuery ? SubQuery->FirstUnionSubQuery() : nullptr;
  if (first) fields->Assign(first->ResultFields());
}

void TSQLFromFunction::CalcFieldsList(const TSQLWithClauseItemList&, const TSQLFromSourceList&,
                                      TmvConnection* connection) {
  TmvMetadataFieldsList* fields = FieldsList();
  fields->Clear();
  TmvMetadataObject* object = GetMetadataObject();
  if (object) {
    if (!object->GetFields()->Loaded()) object->LoadFieldsOnDemand(connection);
    if (object->GetFields()->Loaded()) {
      SetFieldsList(object->GetFields());
      return;
    }
  }
  TmvBaseSQLContext* context = SQLContext();
  if (!Name || !MayAskServer(context)) return;
  // A call with every parameter null tells the columns without side effects
  // that depend on the values.
  const int paramCount = Params ? Params->GetCount() : 0;
  WideString params;
  for (int i = 0; i < paramCount; ++i) params += i ? u",null" : u"null";
  const WideString name = Name->SimpleSQL(context->SQLBuilderExpressionForServer());
  context->LoadFieldsForQuery(connection, context->SyntaxProvider()->GetQueryToLoadFieldsForProcedure(u"", name, params),
                              *fields);
  if (!object || fields->Count() == 0) return;
  object->GetFields()->Assign(fields);
  if (auto* procedure = TmvCast<TmvMetadataProcedure>(object)) {
    TmvMetadataParametersList* parameters = procedure->Parameters();
    while (parameters->Count() < paramCount) parameters->Add();
    parameters->SetLoaded(true);
  }
}

void TSQLFromGroup::CalcFieldsList(const TSQLWithClauseItemList&, const TSQLFromSourceList&, TmvConnection*) {
  FieldsList()->Clear();
}

}  // namespace mv
