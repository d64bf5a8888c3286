// The query forms of the dialects. Each adds its controls to the select mode
// of TmvQueryPropsForm, reads them from the dialect's extenders of the SELECT
// or of its statement, checks them at OK and writes them back.
#pragma once

#include "dialects/forms/QueryPropsForm.h"

namespace mv {

#define MV_QUERY_PROPS_FORM(Name)                       \
  class Name : public TmvQueryPropsForm {               \
   public:                                              \
    explicit Name(const TmvPropsFormTarget& target);    \
    void LoadProps() override;                          \
    void CheckCanClose() override;                      \
    void SaveProps() override;                          \
  };

// TOP ahead of the select list (TopPropsForms.cpp).
MV_QUERY_PROPS_FORM(TmvQueryPropsMSForm)
MV_QUERY_PROPS_FORM(TmvQueryPropsAccessForm)
MV_QUERY_PROPS_FORM(TmvQueryPropsSbForm)
MV_QUERY_PROPS_FORM(TmvQueryPropsAdvantageForm)
MV_QUERY_PROPS_FORM(TmvQueryPropsTeradataForm)
// LIMIT and OFFSET, FETCH FIRST (LimitPropsForms.cpp).
MV_QUERY_PROPS_FORM(TmvQueryPropsPgForm)
MV_QUERY_PROPS_FORM(TmvQueryPropsSQLiteForm)
MV_QUERY_PROPS_FORM(TmvQueryPropsNetezzaForm)
MV_QUERY_PROPS_FORM(TmvQueryPropsMYForm)
MV_QUERY_PROPS_FORM(TmvQueryPropsDB2Form)
// FIRST/SKIP and ROWS (FirstSkipPropsForms.cpp).
MV_QUERY_PROPS_FORM(TmvQueryPropsFbForm)
MV_QUERY_PROPS_FORM(TmvQueryPropsIbForm)

#undef MV_QUERY_PROPS_FORM

// Oracle adds only the mode Unique.
class TmvQueryPropsOracleForm : public TmvQueryPropsForm {
 public:
  explicit TmvQueryPropsOracleForm(const TmvPropsFormTarget& target);
};

}  // namespace mv
