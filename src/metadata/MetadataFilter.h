// The metadata filter: masks of schemas and object names to include and to
// exclude. It works twice: as a SQL condition the server applies while
// objects are fetched (CreatePrefilterCondition), and as a test of each
// object on the client (FilterMetadataObject). The order of the items
// carries no priority; an exclude item beats an include item, and an object
// of a kind that no include item names stays in.
#pragma once

#include <cstdint>

#include "metadata/MetadataBase.h"
#include "support/UpdatableCollection.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseSQLContext;
class TmvMetadataObject;

enum TmvMetadataFilterApplyFor : uint8_t { mfTables, mfViews, mfProcedures, mfSynonyms };
// A set of TmvMetadataFilterApplyFor, one bit per kind.
using TmvMetadataFilterApplyForSet = uint8_t;
constexpr TmvMetadataFilterApplyForSet MetadataFilterKindBit(TmvMetadataFilterApplyFor kind) {
  return TmvMetadataFilterApplyForSet(1u << kind);
}
constexpr TmvMetadataFilterApplyForSet kMetadataFilterAllKinds = 0x0F;

class TmvMetadataFilterItem : public TmvUpdatableCollectionItem {
  MV_DECLARE_CLASS()
 public:
  explicit TmvMetadataFilterItem(TmvCollection* collection);
  void Assign(const TmvPersistent* source) override;

  // Kinds of object the item applies to; all four by default.
  TmvMetadataFilterApplyForSet ApplyFor() const { return applyFor_; }
  void SetApplyFor(TmvMetadataFilterApplyForSet value);
  bool AppliesTo(TmvMetadataFilterApplyFor kind) const { return (applyFor_ & MetadataFilterKindBit(kind)) != 0; }
  // "%" by default; empty or "%" sets no limit.
  const WideString& SchemaMask() const { return schemaMask_; }
  void SetSchemaMask(WideStringView value);
  bool SchemaMaskCaseSensitive() const { return schemaMaskCaseSensitive_; }
  void SetSchemaMaskCaseSensitive(bool value);
  const WideString& ObjectMask() const { return objectMask_; }
  void SetObjectMask(WideStringView value);
  bool ObjectMaskCaseSensitive() const { return objectMaskCaseSensitive_; }
  void SetObjectMaskCaseSensitive(bool value);
  // The item names objects to leave out.
  bool Exclude() const { return exclude_; }
  void SetExclude(bool value);

  // Whether a schema and an object name (without quotes) match both masks.
  bool Matches(WideStringView schema, WideStringView name) const;

 private:
  TmvMetadataFilterApplyForSet applyFor_ = kMetadataFilterAllKinds;
  WideString schemaMask_ = u"%";
  bool schemaMaskCaseSensitive_ = true;
  WideString objectMask_ = u"%";
  bool objectMaskCaseSensitive_ = true;
  bool exclude_ = false;
};

class TmvMetadataFilter : public TmvUpdatableCollection {
  MV_DECLARE_CLASS()
 public:
  explicit TmvMetadataFilter(TmvPersistent* owner = nullptr, ImvBatchUpdatable* parent = nullptr);

  TmvMetadataFilterItem* Add() { return static_cast<TmvMetadataFilterItem*>(TmvUpdatableCollection::Add()); }
  TmvMetadataFilterItem* Insert(int index) {
    return static_cast<TmvMetadataFilterItem*>(TmvUpdatableCollection::Insert(index));
  }
  TmvMetadataFilterItem* Items(int index) const { return static_cast<TmvMetadataFilterItem*>(GetItem(index)); }

  // The kind of a table, view, procedure or synonym; false for another class.
  static bool KindOf(const TmvMetadataObject* object, TmvMetadataFilterApplyFor& kind);

  // Whether the object passes the filter on the client.
  bool FilterMetadataObject(const TmvMetadataObject* object) const;

  // The condition of the items that apply to `kind`, over the catalog
  // columns `schemaExpression` and `objectExpression`, with the dialect's
  // wildcards; empty when the items set no limit. Masks are written as SQL
  // string literals (quotes doubled).
  WideString CreatePrefilterCondition(const TmvBaseSQLContext* context, WideStringView schemaExpression,
                                      WideStringView objectExpression, TmvMetadataFilterApplyFor kind,
                                      WideStringView multiWildcard = u"%", WideStringView singleWildcard = u"_") const;
};

}  // namespace mv
