// The query builder's properties (the look and behaviour of the designer,
// the settings of its SQL text) and its option objects, in one registry
// made from component/options/QueryBuilder.def: names, types, defaults and
// the keys of the properties XML. The query builder owns one and hands its
// accessors out as its own (builder->SnapToGrid(), builder->OptionsView()).
//
// Rows that the builder keeps elsewhere (WorkOffline on the metadata
// container, the SQL builders' settings, the model's options) are read and
// written through the builder; the rest are fields here. A change of any
// of them, or of an option object, notifies this object's listeners and,
// at the end of the update, carries the options the model reads into the
// builder's TmvModelOptions.
#pragma once

#include "component/Options.h"

namespace mv {

class TmvQueryBuilder;

class TmvQueryBuilderProperties : public TmvOptionsBase {
  MV_DECLARE_CLASS()
 public:
  explicit TmvQueryBuilderProperties(TmvQueryBuilder& builder);
  static const TmvPropertyTable& Properties();
  const TmvPropertyTable& PropertyTable() const override { return Properties(); }
  TmvQueryBuilder& Builder() const { return *builder_; }

  // The link painters' class names; another name gives the Access painter's.
  static WideString CorrectLinkPainterClassName(const WideString& name);
  // Copies the options the model reads into the builder's TmvModelOptions.
  void UpdateModelOptions();

 protected:
  void DoUpdated() override;

 private:
  TmvQueryBuilder* builder_;

 public:
#define MV_OPTIONS_MEMBERS
#include "component/options/QueryBuilder.def"
};

}  // namespace mv
