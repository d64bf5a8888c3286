#include "metadata/dataset/MemoryDataSet.h"

#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

TmvMemoryTable& TmvMemoryTable::AddColumn(WideString name, TFieldType type, int size, TFieldAttributes attributes) {
  TmvFieldDef def;
  def.Name = std::move(name);
  def.DataType = type;
  def.Size = size;
  def.Attributes = attributes;
  return AddColumn(std::move(def));
}

TmvMemoryTable& TmvMemoryTable::AddColumn(TmvFieldDef def) {
  Columns.push_back(std::move(def));
  return *this;
}

TmvMemoryTable& TmvMemoryTable::AddRow(std::vector<TmvVariant> values) {
  if (values.size() != Columns.size())
    throw EmvQueryBuilderError(WideFormat(u"A row of %d values given for %d columns",
                                          {static_cast<int>(values.size()), static_cast<int>(Columns.size())}));
  Rows.push_back(std::move(values));
  return *this;
}

TmvMemoryDataSet::TmvMemoryDataSet(TmvMemoryTable table)
    : TmvDataSet(nullptr), scripted_(false), table_(std::move(table)) {}

TmvMemoryDataSet::TmvMemoryDataSet(TmvMemoryConnection* connection) : TmvDataSet(connection), scripted_(true) {}

void TmvMemoryDataSet::SetTable(TmvMemoryTable table) {
  Close();
  table_ = std::move(table);
  FieldDefs().Clear();
}

int64_t TmvMemoryDataSet::RecordCount() const { return Active() ? static_cast<int64_t>(table_.Rows.size()) : 0; }

TmvMemoryConnection* TmvMemoryDataSet::Scripted() {
  if (!scripted_) return nullptr;
  return static_cast<TmvMemoryConnection*>(&RequireConnection());
}

void TmvMemoryDataSet::LoadScriptedTable(TmvMemoryConnection& connection) {
  const TmvMemoryConnection::TScriptEntry* entry = connection.Find(CommandText());
  if (!entry) RaiseError(u"No result is scripted for this statement");
  if (!entry->Error.empty()) RaiseError(entry->Error);
  table_ = entry->Handler ? entry->Handler(Params()) : entry->Result;
}

void TmvMemoryDataSet::InternalPrepare(TmvFieldDefs& defs) {
  if (TmvMemoryConnection* connection = Scripted()) LoadScriptedTable(*connection);
  for (const TmvFieldDef& column : table_.Columns) defs.Add(column);
}

void TmvMemoryDataSet::InternalOpen(TmvFieldDefs& defs) {
  if (TmvMemoryConnection* connection = Scripted()) {
    if (ParamCheck())
      for (const TmvSQLParamRef& ref : FindSQLParams(CommandText(), connection->ParamScanOptions()))
        BoundParam(ref.Name);
    LoadScriptedTable(*connection);
    connection->Record(*this, false);
  }
  // The columns as they are now: a handler may answer others once the values
  // are known, and SetTable may have replaced the rows after a prepare.
  defs.Clear();
  for (const TmvFieldDef& column : table_.Columns) defs.Add(column);
  row_ = 0;
}

bool TmvMemoryDataSet::InternalFetch(TmvFields& fields) {
  if (row_ >= table_.Rows.size()) return false;
  const std::vector<TmvVariant>& row = table_.Rows[row_++];
  for (int i = 0; i < fields.Count(); ++i) {
    const TmvVariant& value = row[static_cast<size_t>(i)];
    fields[i].SetData(value.IsEmpty() ? TmvVariant::Null() : value);
  }
  return true;
}

int64_t TmvMemoryDataSet::InternalExecute() {
  TmvMemoryConnection* connection = Scripted();
  if (!connection) return 0;
  const TmvMemoryConnection::TScriptEntry* entry = connection->Find(CommandText());
  if (entry && !entry->Error.empty()) RaiseError(entry->Error);
  connection->Record(*this, true);
  return 0;
}

TmvMemoryConnection::~TmvMemoryConnection() { CloseDataSets(); }

void TmvMemoryConnection::AddResult(WideString sql, TmvMemoryTable table, TmvScriptMatch match) {
  script_.push_back({std::move(sql), match, std::move(table), {}, {}});
}

void TmvMemoryConnection::AddHandler(WideString sql, TmvScriptHandler handler, TmvScriptMatch match) {
  script_.push_back({std::move(sql), match, {}, std::move(handler), {}});
}

void TmvMemoryConnection::AddError(WideString sql, WideString message, TmvScriptMatch match) {
  if (message.empty()) message = u"Scripted failure";
  script_.push_back({std::move(sql), match, {}, {}, std::move(message)});
}

std::vector<TmvMemoryConnection::TmvReceivedStatement> TmvMemoryConnection::Received() const {
  std::lock_guard lock(receivedMutex_);
  return received_;
}

void TmvMemoryConnection::ClearReceived() {
  std::lock_guard lock(receivedMutex_);
  received_.clear();
}

std::unique_ptr<TmvDataSet> TmvMemoryConnection::CreateQuery() { return std::make_unique<TmvMemoryDataSet>(this); }

std::unique_ptr<TmvConnection> TmvMemoryConnection::CloneClosed() const {
  auto copy = std::make_unique<TmvMemoryConnection>();
  copy->script_ = script_;
  copy->openError_ = openError_;
  return copy;
}

void TmvMemoryConnection::DoOpen() {
  if (!openError_.empty()) throw EmvQueryBuilderError(openError_);
}

const TmvMemoryConnection::TScriptEntry* TmvMemoryConnection::Find(WideStringView sql) const {
  const WideString trimmed = WideTrim(sql);
  for (const TScriptEntry& entry : script_) {
    const bool matches = entry.Match == TmvScriptMatch::smExact ? WideTrim(entry.Sql) == trimmed
                                                                 : trimmed.find(entry.Sql) != WideString::npos;
    if (matches) return &entry;
  }
  return nullptr;
}

void TmvMemoryConnection::Record(const TmvDataSet& dataset, bool executed) {
  std::lock_guard lock(receivedMutex_);
  received_.push_back({dataset.CommandText(), dataset.Params(), executed});
}

}  // namespace mv
