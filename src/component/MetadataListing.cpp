#include "component/MetadataListing.h"

#include <algorithm>

#include "component/Options.h"
#include "metadata/MetadataObject.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

int CompareTokens(const TastToken* a, const TastToken* b) {
  return WideCompareText(a ? WideStringView(a->Token) : WideStringView(), b ? WideStringView(b->Token) : WideStringView());
}

// Absent first, then by the number of parts, then part by part from the outermost.
int CompareNames(const TSQLQualifiedName* a, const TSQLQualifiedName* b) {
  const int countA = a ? a->Items.Count() : 0, countB = b ? b->Items.Count() : 0;
  if (countA != countB) return countA < countB ? -1 : 1;
  for (int i = countA - 1; i >= 0; --i)
    if (int order = CompareTokens(a->Token(i), b->Token(i))) return order;
  return 0;
}

}  // namespace

TmvMetadataObjectKind MetadataObjectKind(const TmvMetadataObject* object) {
  if (TmvCast<TmvMetadataTable>(object)) return mokTable;
  if (TmvCast<TmvMetadataView>(object)) return mokView;
  if (TmvCast<TmvMetadataProcedure>(object)) return mokProcedure;
  if (TmvCast<TmvMetadataSynonym>(object)) return mokSynonym;
  return mokOther;
}

bool IsShownByTreeOptions(const TmvMetadataObject* object, const TmvMetadataTreeOptions& o) {
  if (!object || !object->Visible()) return false;
  const bool system = object->System();
  switch (MetadataObjectKind(object)) {
    case mokTable: return system ? o.ShowSystemTables() : o.ShowUserTables();
    case mokView: return system ? o.ShowSystemViews() : o.ShowUserViews();
    case mokProcedure: return system ? o.ShowSystemProcedures() : o.ShowUserProcedures();
    case mokSynonym: return system ? o.ShowSystemSynonyms() : o.ShowUserSynonyms();
    case mokOther: return false;
  }
  return false;
}

void SortMetadataObjects(std::vector<TmvMetadataObject*>& objects, const TmvMetadataTreeOptions& options,
                         const TSQLBuilder& print) {
  const TmvQBObjectsSortingType sorting = options.SortingType();
  if (sorting == ostNone) return;
  auto nameKey = [&](const TmvMetadataObject* object) {
    return print.UseAltNames() && !object->AltName().empty() ? object->AltName() : object->NameStrNotQuoted();
  };
  auto location = [](const TmvMetadataObject* a, const TmvMetadataObject* b) {
    if (int order = CompareNames(a->DBLink(), b->DBLink())) return order;
    if (int order = CompareNames(a->Database(), b->Database())) return order;
    return CompareTokens(a->Schema(), b->Schema());
  };
  std::stable_sort(objects.begin(), objects.end(), [&](TmvMetadataObject* a, TmvMetadataObject* b) {
    const int kind = int(MetadataObjectKind(a)) - int(MetadataObjectKind(b));
    if (sorting == ostTypeName && kind) return kind < 0;
    if (int order = location(a, b)) return order < 0;
    if (sorting == ostSchemaTypeName && kind) return kind < 0;
    return WideCompareText(nameKey(a), nameKey(b)) < 0;
  });
}

}  // namespace mv
