#include "metadata/MetadataFilter.h"

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataMask.h"
#include "metadata/MetadataObject.h"
#include "support/TextHelpers.h"

namespace mv {

MV_DEFINE_CLASS(TmvMetadataFilterItem, TmvUpdatableCollectionItem)
MV_DEFINE_CLASS(TmvMetadataFilter, TmvUpdatableCollection)

namespace {

bool IsNoLimit(WideStringView mask) { return mask.empty() || mask == u"%"; }

// A client mask in the server's LIKE syntax: wildcards replaced, literal
// stretches copied without their marks.
WideString TranslateMask(WideStringView mask, WideStringView multiWildcard, WideStringView singleWildcard) {
  WideString result;
  for (size_t i = 0; i < mask.size(); ++i) {
    const char16_t c = mask[i];
    if (c == u'%') {
      result += multiWildcard;
    } else if (c == u'_') {
      result += singleWildcard;
    } else if (c == u'"' || c == u'[') {
      const size_t end = mask.find(c == u'"' ? u'"' : u']', i + 1);
      const size_t stop = end == WideStringView::npos ? mask.size() : end;
      result += mask.substr(i + 1, stop - i - 1);
      i = stop;
    } else {
      result += c;
    }
  }
  return result;
}

WideString LikePart(WideStringView expression, WideStringView mask, bool caseSensitive, bool exclude,
                    WideStringView upper) {
  const WideString like = exclude ? u" not like " : u" like ";
  const WideString literal = SQLQuoteString(mask);
  if (caseSensitive) return u"(" + WideString(expression) + like + literal + u")";
  return u"(" + WideString(upper) + u"(" + WideString(expression) + u")" + like + WideString(upper) + u"(" + literal +
         u"))";
}

}  // namespace

// --- TmvMetadataFilterItem ---

TmvMetadataFilterItem::TmvMetadataFilterItem(TmvCollection* collection) : TmvUpdatableCollectionItem(collection) {}

void TmvMetadataFilterItem::Assign(const TmvPersistent* source) {
  const auto* other = TmvCast<TmvMetadataFilterItem>(source);
  if (!other) {
    TmvUpdatableCollectionItem::Assign(source);
    return;
  }
  TmvUpdateBatch batch(*this);
  SetApplyFor(other->applyFor_);
  SetSchemaMask(other->schemaMask_);
  SetSchemaMaskCaseSensitive(other->schemaMaskCaseSensitive_);
  SetObjectMask(other->objectMask_);
  SetObjectMaskCaseSensitive(other->objectMaskCaseSensitive_);
  SetExclude(other->exclude_);
}

void TmvMetadataFilterItem::SetApplyFor(TmvMetadataFilterApplyForSet value) {
  SetValueAndNotify(*this, applyFor_, TmvMetadataFilterApplyForSet(value & kMetadataFilterAllKinds));
}
void TmvMetadataFilterItem::SetSchemaMask(WideStringView value) { SetValueAndNotify(*this, schemaMask_, value); }
void TmvMetadataFilterItem::SetSchemaMaskCaseSensitive(bool value) {
  SetValueAndNotify(*this, schemaMaskCaseSensitive_, value);
}
void TmvMetadataFilterItem::SetObjectMask(WideStringView value) { SetValueAndNotify(*this, objectMask_, value); }
void TmvMetadataFilterItem::SetObjectMaskCaseSensitive(bool value) {
  SetValueAndNotify(*this, objectMaskCaseSensitive_, value);
}
void TmvMetadataFilterItem::SetExclude(bool value) { SetValueAndNotify(*this, exclude_, value); }

bool TmvMetadataFilterItem::Matches(WideStringView schema, WideStringView name) const {
  return (IsNoLimit(schemaMask_) || MatchesMask(schema, schemaMask_, schemaMaskCaseSensitive_)) &&
         (IsNoLimit(objectMask_) || MatchesMask(name, objectMask_, objectMaskCaseSensitive_));
}

// --- TmvMetadataFilter ---

TmvMetadataFilter::TmvMetadataFilter(TmvPersistent* owner, ImvBatchUpdatable* parent)
    : TmvUpdatableCollection(owner, CollectionItemClassOf<TmvMetadataFilterItem>(), parent) {}

bool TmvMetadataFilter::KindOf(const TmvMetadataObject* object, TmvMetadataFilterApplyFor& kind) {
  if (TmvCast<TmvMetadataTable>(object))
    kind = mfTables;
  else if (TmvCast<TmvMetadataView>(object))
    kind = mfViews;
  else if (TmvCast<TmvMetadataProcedure>(object))
    kind = mfProcedures;
  else if (TmvCast<TmvMetadataSynonym>(object))
    kind = mfSynonyms;
  else
    return false;
  return true;
}

bool TmvMetadataFilter::FilterMetadataObject(const TmvMetadataObject* object) const {
  if (Count() == 0) return true;
  TmvMetadataFilterApplyFor kind;
  if (!KindOf(object, kind)) return true;
  const WideString& schema = object->Schema()->Token;
  const WideString& name = object->Name()->Token;
  bool includeApplied = false;
  bool included = false;
  for (int i = 0; i < Count() && !included; ++i) {
    const TmvMetadataFilterItem* item = Items(i);
    if (item->Exclude() || !item->AppliesTo(kind)) continue;
    includeApplied = true;
    included = item->Matches(schema, name);
  }
  if (includeApplied && !included) return false;
  for (int i = 0; i < Count(); ++i) {
    const TmvMetadataFilterItem* item = Items(i);
    if (item->Exclude() && item->AppliesTo(kind) && item->Matches(schema, name)) return false;
  }
  return true;
}

WideString TmvMetadataFilter::CreatePrefilterCondition(const TmvBaseSQLContext* context,
                                                       WideStringView schemaExpression, WideStringView objectExpression,
                                                       TmvMetadataFilterApplyFor kind, WideStringView multiWildcard,
                                                       WideStringView singleWildcard) const {
  const TmvBaseSyntaxProvider* provider = context ? context->SyntaxProvider() : nullptr;
  const WideString upper = provider ? provider->GetUpperCaseFunctionName() : WideString(u"upper");
  WideString includes;
  WideString excludes;
  for (int i = 0; i < Count(); ++i) {
    const TmvMetadataFilterItem* item = Items(i);
    if (!item->AppliesTo(kind)) continue;
    WideString schemaPart;
    WideString objectPart;
    if (!IsNoLimit(item->SchemaMask()))
      schemaPart = LikePart(schemaExpression, TranslateMask(item->SchemaMask(), multiWildcard, singleWildcard),
                            item->SchemaMaskCaseSensitive(), item->Exclude(), upper);
    if (!IsNoLimit(item->ObjectMask()))
      objectPart = LikePart(objectExpression, TranslateMask(item->ObjectMask(), multiWildcard, singleWildcard),
                            item->ObjectMaskCaseSensitive(), item->Exclude(), upper);
    WideString part;
    if (!schemaPart.empty() && !objectPart.empty())
      part = u"(" + schemaPart + u")and(" + objectPart + u")";
    else
      part = schemaPart.empty() ? objectPart : schemaPart;
    if (part.empty()) continue;
    WideString& target = item->Exclude() ? excludes : includes;
    if (!target.empty()) target += item->Exclude() ? u"and" : u"or";
    target += part;
  }
  if (!includes.empty() && !excludes.empty()) return u"(" + includes + u")and(" + excludes + u")";
  return includes.empty() ? excludes : includes;
}

}  // namespace mv
