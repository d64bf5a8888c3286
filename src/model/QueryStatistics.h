// What the query as it stands reads and returns, for hosts (rights checks,
// partial metadata loading, the query transformer): the database objects it
// reads, their columns, and the columns it returns. Derived tables and with
// items are seen through: a column of a derived table counts as the columns
// that its select item reads.
//
// The lists are taken from the statistics that the nodes of the result tree
// gather (tree/NodeStatistics.h); the host makes that tree and gathers them
// (TmvQueryModelHost::ReloadStatistics). A list that is not valid asks the
// host first. Items refer to metadata objects, fields and model objects
// without owning them: after a change of the query or the metadata, read
// them again.
//
//   TmvStatisticsBase                   validity, the host
//   TmvQueryStatistics                  the statement and its three lists
//   TmvStatisticsDatabaseObject(sList)  objects used
//   TmvStatisticsColumn(sList)          their columns used
//   TmvStatisticsOutputColumn(sList)    columns returned
#pragma once

#include <memory>
#include <vector>

#include "support/FieldType.h"
#include "support/UpdatablePersistent.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseSQLContext;
class TmvQueryModelHost;
class TmvMetadataObject;
class TmvMetadataField;
class TmvSelectItem;
class TmvDatasource;
class TSQLSelectStatement;
class TSQLQualifiedName;
class TSQLSelectItem;
class TastTokenIdentifier;
class TastIdentifiersList;

class TmvStatisticsBase : public TmvUpdatablePersistent {
  MV_DECLARE_CLASS()
 public:
  explicit TmvStatisticsBase(TmvQueryModelHost* host);

  TmvQueryModelHost* QueryBuilder() const { return host_; }
  TmvBaseSQLContext* SQLContext() const;
  // True at first; false once the query or the metadata changed.
  bool Valid() const { return valid_; }
  void SetStatisticsInvalid();
  void SetStatisticsValid() { valid_ = true; }

 protected:
  // What an invalidation frees; nothing here.
  virtual void SetStatisticsInvalidInternal() {}

 private:
  TmvQueryModelHost* host_;
  bool valid_ = true;
};

// --- Objects ---

class TmvStatisticsDatabaseObject : public TmvStatisticsBase {
  MV_DECLARE_CLASS()
 public:
  // Takes the parts (never null) and copies the aliases.
  TmvStatisticsDatabaseObject(TmvQueryModelHost* host, TmvMetadataObject* metadataObject,
                              TmvOwned<TastTokenIdentifier> schema, TmvOwned<TastTokenIdentifier> objectName,
                              TmvOwned<TSQLQualifiedName> database, TmvOwned<TSQLQualifiedName> fullName,
                              const TastIdentifiersList* aliases);
  ~TmvStatisticsDatabaseObject() override;

  // An empty token when the name has none.
  const TastTokenIdentifier* Schema() const { return schema_.get(); }
  const TastTokenIdentifier* ObjectName() const { return objectName_.get(); }
  // May have no parts.
  const TSQLQualifiedName* Database() const { return database_.get(); }
  // Database, schema and object; bound to no FROM source.
  const TSQLQualifiedName* FullName() const { return fullName_.get(); }
  // Null for an object that the metadata container does not know.
  TmvMetadataObject* MetadataObject() const { return metadataObject_; }
  // Every alias under which the query uses the object (never null).
  const TastIdentifiersList* Aliases() const { return aliases_.get(); }

 private:
  TmvMetadataObject* metadataObject_;
  TmvOwned<TastTokenIdentifier> schema_;
  TmvOwned<TastTokenIdentifier> objectName_;
  TmvOwned<TSQLQualifiedName> database_;
  TmvOwned<TSQLQualifiedName> fullName_;
  TmvOwned<TastIdentifiersList> aliases_;
};

// The part the three lists share: an owning list of items, generated first
// (through the host) when not valid.
template <class Item>
class TmvStatisticsList : public TmvStatisticsBase {
 public:
  using TmvStatisticsBase::TmvStatisticsBase;
  int GetCount() {
    MakeValid();
    return int(items_.size());
  }
  Item* GetItems(int index) {
    MakeValid();
    return items_.at(size_t(index)).get();
  }

 protected:
  void SetStatisticsInvalidInternal() override { items_.clear(); }
  void MakeValid();
  Item* AddItem(TmvOwned<Item> item) {
    items_.push_back(std::move(item));
    return items_.back().get();
  }
  void ClearItems() { items_.clear(); }

 private:
  std::vector<TmvOwned<Item>> items_;
};

class TmvStatisticsDatabaseObjectsList : public TmvStatisticsList<TmvStatisticsDatabaseObject> {
 public:
  using TmvStatisticsList::TmvStatisticsList;
  // One item per entry of the statement's objects; an unknown object's name
  // is split into object, schema (where the dialect has schemas) and
  // database, and skipped when it does not start with an identifier.
  void ReloadStatistics(TSQLSelectStatement* statement);
};

// --- Columns ---

class TmvStatisticsColumn : public TmvStatisticsBase {
  MV_DECLARE_CLASS()
 public:
  TmvStatisticsColumn(TmvQueryModelHost* host, TmvMetadataObject* metadataObject, TmvMetadataField* field,
                      TmvOwned<TSQLQualifiedName> columnName, TmvOwned<TastTokenIdentifier> schema,
                      TmvOwned<TastTokenIdentifier> objectName, TmvOwned<TSQLQualifiedName> database,
                      bool selected);
  ~TmvStatisticsColumn() override;

  const TSQLQualifiedName* ColumnName() const { return columnName_.get(); }
  // Of the column's object; empty tokens when unknown.
  const TastTokenIdentifier* Schema() const { return schema_.get(); }
  const TastTokenIdentifier* ObjectName() const { return objectName_.get(); }
  const TSQLQualifiedName* Database() const { return database_.get(); }
  // Database, schema if any, object and column.
  const TSQLQualifiedName* FullName() const { return fullName_.get(); }
  // The column stands in the select list of a member of the main query.
  bool Selected() const { return selected_; }
  TmvMetadataField* Field() const { return field_; }
  TmvMetadataObject* MetadataObject() const { return metadataObject_; }
  // The field's, or ftUnknown and empty text without a field.
  TFieldType GetFieldType() const;
  WideString GetFieldTypeName() const;

 private:
  TmvMetadataObject* metadataObject_;
  TmvMetadataField* field_;
  TmvOwned<TSQLQualifiedName> columnName_;
  TmvOwned<TastTokenIdentifier> schema_;
  TmvOwned<TastTokenIdentifier> objectName_;
  TmvOwned<TSQLQualifiedName> database_;
  TmvOwned<TSQLQualifiedName> fullName_;
  bool selected_;
};

class TmvStatisticsColumnsList : public TmvStatisticsList<TmvStatisticsColumn> {
 public:
  using TmvStatisticsList::TmvStatisticsList;
  // One item per entry of the statement's columns; Selected for the entries
  // that a select item of any member reads.
  void ReloadStatistics(TSQLSelectStatement* statement);
};

// --- Output columns ---

class TmvStatisticsOutputColumn : public TmvStatisticsBase {
  MV_DECLARE_CLASS()
 public:
  // What describes one returned column; the names in query are computed from it.
  struct Data {
    TmvSelectItem* SelectItem = nullptr;
    TSQLSelectItem* SelectItemNode = nullptr;
    WideString Expression;
    WideString Alias;
    WideString ColumnName;
    WideString ObjectAlias;
    WideString ObjectName;
    TmvMetadataField* Field = nullptr;
    TmvMetadataObject* MetadataObject = nullptr;
    TmvDatasource* Datasource = nullptr;
    // The name of the result field the column stands for, and its type
    // when the column has no metadata field.
    WideString ResultFieldName;
    TFieldType ResultFieldType = TFieldType(0);
    WideString ResultFieldTypeName;
  };
  TmvStatisticsOutputColumn(TmvQueryModelHost* host, Data data);

  // The model's row behind the column; null when it is not known.
  TmvSelectItem* SelectItem() const { return data_.SelectItem; }
  // The select item of the result tree (valid while that tree lives).
  TSQLSelectItem* SelectItemNode() const { return data_.SelectItemNode; }
  // The expression's text as the server reads it.
  const WideString& Expression() const { return data_.Expression; }
  // May be empty.
  const WideString& Alias() const { return data_.Alias; }
  // The bare column name (empty for an expression that is no column).
  const WideString& ColumnName() const { return data_.ColumnName; }
  // The source's alias; may be empty.
  const WideString& ObjectAlias() const { return data_.ObjectAlias; }
  // The full name of the source's object; may be empty.
  const WideString& ObjectName() const { return data_.ObjectName; }
  TmvMetadataField* Field() const { return data_.Field; }
  TmvMetadataObject* MetadataObject() const { return data_.MetadataObject; }
  TmvDatasource* Datasource() const { return data_.Datasource; }
  // The datasource's name in the query; else the object's alias; else its name.
  const WideString& ObjectNameInQuery() const { return objectNameInQuery_; }
  // The alias; else the field's name; else the result field's; else ColumnName.
  const WideString& ColumnNameInQuery() const { return columnNameInQuery_; }
  // The field's type; else the type of the expression.
  TFieldType GetFieldType() const;
  WideString GetFieldTypeName() const;

 private:
  Data data_;
  WideString objectNameInQuery_;
  WideString columnNameInQuery_;
};

class TmvStatisticsOutputColumnsList : public TmvStatisticsList<TmvStatisticsOutputColumn> {
 public:
  using TmvStatisticsList::TmvStatisticsList;
  // The columns of the statement's first select (union members share them).
  void ReloadStatistics(TSQLSelectStatement* statement);
};

// --- The whole ---

class TmvQueryStatistics : public TmvStatisticsBase {
  MV_DECLARE_CLASS()
 public:
  explicit TmvQueryStatistics(TmvQueryModelHost* host);
  ~TmvQueryStatistics() override;

  // The statement the lists were last loaded from (not owned); null when not valid.
  TSQLSelectStatement* Statement() const { return statement_; }
  TmvStatisticsDatabaseObjectsList* UsedDatabaseObjects() const { return usedDatabaseObjects_.get(); }
  TmvStatisticsColumnsList* UsedColumns() const { return usedColumns_.get(); }
  TmvStatisticsOutputColumnsList* OutputColumns() const { return outputColumns_.get(); }

  // Fills the three lists from the statement, whose nodes have gathered
  // their statistics; null empties them. Valid afterwards.
  void ReloadStatistics(TSQLSelectStatement* statement);
  // The structure of the statement as an XML document (model/QueryStructureXML.h),
  // its texts as the server reads them; the statistics are made first when
  // not valid. Defined in QueryStructureXML.cpp.
  WideString GetQueryStructureXML();

 protected:
  // Forgets the statement and invalidates the three lists.
  void SetStatisticsInvalidInternal() override;

 private:
  TSQLSelectStatement* statement_ = nullptr;
  TmvOwned<TmvStatisticsDatabaseObjectsList> usedDatabaseObjects_;
  TmvOwned<TmvStatisticsColumnsList> usedColumns_;
  TmvOwned<TmvStatisticsOutputColumnsList> outputColumns_;
};

}  // namespace mv
