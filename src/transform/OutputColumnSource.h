// The columns a query builder's query returns, as its statistics give them:
// the first SELECT counts, since union members share their columns. A star
// gives a column per field of the sources it stands for.
#pragma once

#include <vector>

#include "transform/OutputColumns.h"

namespace mv {

class TmvQueryBuilder;

std::vector<TmvOutputColumnInfo> CollectOutputColumns(TmvQueryBuilder* queryBuilder);

// Whether the main query is more than one SELECT: no builder, a main group
// that does not hold exactly one member, or a member that is a group.
bool TransformerQueryHasUnions(TmvQueryBuilder* queryBuilder);

}  // namespace mv
