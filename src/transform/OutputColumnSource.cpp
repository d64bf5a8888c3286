#include "transform/OutputColumnSource.h"

#include "component/QueryBuilder.h"
#include "model/QueryStatistics.h"
#include "model/QueryTree.h"

namespace mv {

bool TransformerQueryHasUnions(TmvQueryBuilder* queryBuilder) {
  if (!queryBuilder || !queryBuilder->Query()) return true;
  TmvQuery* query = queryBuilder->Query();
  return query->Count() != 1 || !TmvCast<TmvUnionSubQuery>(query->Items(0));
}

std::vector<TmvOutputColumnInfo> CollectOutputColumns(TmvQueryBuilder* queryBuilder) {
  std::vector<TmvOutputColumnInfo> list;
  if (!queryBuilder || queryBuilder->SleepMode() || queryBuilder->IsDestroying()) return list;
  TmvStatisticsOutputColumnsList* columns = queryBuilder->GetQueryStatistics()->OutputColumns();
  for (int i = 0; i < columns->GetCount(); ++i) {
    const TmvStatisticsOutputColumn* column = columns->GetItems(i);
    TmvOutputColumnInfo info;
    info.Expression = column->Expression();
    info.Alias = column->Alias();
    // A column is known by its alias if it has one.
    info.ColumnName = column->Alias().empty() ? column->ColumnName() : column->Alias();
    info.ObjectName = column->ObjectName();
    info.ObjectNameInQuery = column->ObjectNameInQuery();
    info.ColumnNameInQuery = column->ColumnNameInQuery();
    info.SelectItem = column->SelectItem();
    info.DataType = column->GetFieldType();
    list.push_back(std::move(info));
  }
  return list;
}

}  // namespace mv
