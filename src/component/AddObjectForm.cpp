#include "component/AddObjectForm.h"

#include <algorithm>

#include "component/MetadataListing.h"
#include "component/QueryBuilder.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "model/ControlOwner.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "support/MessageCatalog.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

// The parts of a name without quotes, outermost first, joined by dots.
WideString PlainName(const TSQLQualifiedName* name) {
  WideString text;
  for (int i = name ? name->Items.Count() - 1 : -1; i >= 0; --i)
    if (const TastToken* part = name->Token(i)) text += (text.empty() ? u"" : u".") + part->Token;
  return text;
}

// The object's database with its link, then that with the schema added.
std::vector<WideString> LocationsOf(const TmvMetadataObject* object) {
  WideString database = PlainName(object->Database());
  if (const WideString link = PlainName(object->DBLink()); !link.empty()) database += u"@" + link;
  std::vector<WideString> result{database};
  if (object->Schema() && !object->Schema()->Token.empty())
    result.push_back(database.empty() ? object->Schema()->Token : database + u"." + object->Schema()->Token);
  return result;
}

constexpr TmvAddObjectForm::Tab KindTab(TmvMetadataObjectKind kind) {
  return kind == mokView ? TmvAddObjectForm::tsViews
         : kind == mokProcedure ? TmvAddObjectForm::tsProcedures
         : kind == mokSynonym ? TmvAddObjectForm::tsSynonyms
                              : TmvAddObjectForm::tsTables;
}

}  // namespace

TmvAddObjectForm::TmvAddObjectForm(TmvQueryBuilder& builder) : builder_(builder) {}

void TmvAddObjectForm::Load() {
  LoadSchemas();
  LoadMetadata();
}

void TmvAddObjectForm::LoadSchemas() {
  const WideString former = schemaIndex_ > 0 && schemaIndex_ < int(schemas_.size()) ? schemas_[schemaIndex_] : u"";
  std::vector<WideString> names;
  TmvMetadataContainer* container = builder_.MetadataContainer();
  for (int i = 0; container && i < container->Count(); ++i)
    for (WideString& location : LocationsOf(container->Items(i))) names.push_back(std::move(location));
  std::sort(names.begin(), names.end(), [](const WideString& a, const WideString& b) { return WideCompareText(a, b) < 0; });
  names.erase(std::unique(names.begin(), names.end(), [](const WideString& a, const WideString& b) { return WideSameText(a, b); }),
              names.end());
  schemas_ = {MessageText(u"mvQBAllObjects")};
  schemas_.insert(schemas_.end(), names.begin(), names.end());
  auto found = std::find(schemas_.begin() + 1, schemas_.end(), former);
  schemaIndex_ = former.empty() || found == schemas_.end() ? 0 : int(found - schemas_.begin());
}

void TmvAddObjectForm::SetSchemaIndex(int index) {
  schemaIndex_ = std::clamp(index, 0, int(schemas_.size()) - 1);
  LoadMetadata();
}

void TmvAddObjectForm::LoadMetadata() {
  for (auto& list : lists_) list.clear();
  TmvMetadataContainer* container = builder_.MetadataContainer();
  TmvBaseSQLContext* context = builder_.SQLContext();
  if (!container || !context) return;
  std::vector<TmvMetadataObject*> objects;
  for (int i = 0; i < container->Count(); ++i) objects.push_back(container->Items(i));
  TSQLBuilder& print = context->SQLBuilderExpressionNonQuoted();
  SortMetadataObjects(objects, builder_.TreeOptionsMetadata(), print);
  const WideString choice = schemaIndex_ > 0 ? schemas_[schemaIndex_] : u"";
  for (TmvMetadataObject* object : objects) {
    if (!IsShownByTreeOptions(object, builder_.TreeOptionsMetadata())) continue;
    const std::vector<WideString> locations = LocationsOf(object);
    if (!choice.empty() && std::none_of(locations.begin(), locations.end(),
                                        [&](const WideString& location) { return WideSameText(location, choice); }))
      continue;
    WideString caption = object->GetNameAsString(true, true, true, print);
    // The chosen location is said once, by the choice.
    if (!choice.empty() && WideStartsText(choice + u".", caption)) caption.erase(0, choice.size() + 1);
    lists_[KindTab(MetadataObjectKind(object))].push_back({caption, object});
  }
}

std::vector<TmvAddObjectForm::Tab> TmvAddObjectForm::VisibleTabs() const {
  const TmvAddObjectFormOptions& options = builder_.AddObjectFormOptions();
  std::vector<Tab> tabs;
  if (options.TablesVisible()) tabs.push_back(tsTables);
  if (options.ViewsVisible()) tabs.push_back(tsViews);
  if (options.ProceduresVisible()) tabs.push_back(tsProcedures);
  if (options.SynonymsVisible()) tabs.push_back(tsSynonyms);
  return tabs;
}

int TmvAddObjectForm::AddObjects(Tab tab, const std::vector<int>& indexes) {
  TmvSubQuery* query = builder_.ActiveSubQuery();
  TmvUnionSubQuery* member = query ? query->ActiveUnionSubQuery() : nullptr;
  if (!member) return 0;
  TmvUpdateScope update(member);
  int added = 0;
  for (int index : indexes) {
    if (index < 0 || index >= int(lists_[tab].size())) continue;
    const Item& item = lists_[tab][index];
    if (tab == tsProcedures) {
      added += member->AddStoredProc(item.Data->FullNameStr(), item.Data->NameStrNotQuoted() + u"_") != nullptr;
    } else if (TmvDataSourceObject* source = member->AddObject(item.Data, nullptr)) {
      if (tab == tsTables && builder_.LinkOptions().CreateLinksFromRelations()) member->AddFKLinksForObject(source);
      ++added;
    }
  }
  return added;
}

}  // namespace mv
