#include "metadata/dataset/DataSet.h"

#include "metadata/dataset/Connection.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

TmvDataSet::TmvDataSet(TmvConnection* connection) : connection_(connection) {
  if (connection_) connection_->RegisterDataSet(this);
}

TmvDataSet::~TmvDataSet() {
  if (connection_) connection_->UnregisterDataSet(this);
}

void TmvDataSet::SetCommandText(WideStringView sql) {
  Close();
  Unprepare();
  commandText_ = WideString(sql);
  fieldDefs_.Clear();
  if (paramCheck_) {
    const TmvParams previous(params_);
    params_.ParseSQL(commandText_, connection_ ? connection_->ParamScanOptions() : TmvSQLParamScanOptions{});
    params_.AssignValues(previous);
  }
}

void TmvDataSet::Open() {
  if (active_) return;
  Prepare();
  try {
    InternalOpen(fieldDefs_);
    fields_.Create(fieldDefs_);
    active_ = true;
    eof_ = false;
    Fetch();
    empty_ = eof_;
    atFirst_ = true;
  } catch (...) {
    active_ = false;
    eof_ = empty_ = true;
    fields_.Clear();
    try {
      InternalClose();
    } catch (...) {
      // the failure that brought us here is the one to report
    }
    throw;
  }
}

void TmvDataSet::Close() {
  if (!active_) return;
  active_ = false;
  eof_ = empty_ = true;
  atFirst_ = false;
  fields_.Clear();
  InternalClose();
}

void TmvDataSet::First() {
  if (!active_) RaiseError(u"Cannot perform this operation on a closed dataset");
  if (atFirst_) return;
  InternalRewind();
  eof_ = false;
  Fetch();
  empty_ = eof_;
  atFirst_ = true;
}

void TmvDataSet::Next() {
  if (!active_) RaiseError(u"Cannot perform this operation on a closed dataset");
  if (eof_) return;
  Fetch();
  atFirst_ = false;
}

void TmvDataSet::Fetch() {
  if (!InternalFetch(fields_)) {
    eof_ = true;
    fields_.ClearValues();
  }
}

void TmvDataSet::UpdateFieldDefs() {
  if (active_) {
    if (fieldDefs_.Count() == 0)
      for (int i = 0; i < fields_.Count(); ++i) fieldDefs_.Add(fields_[i].Def());
    return;
  }
  Unprepare();
  Prepare();
}

int64_t TmvDataSet::ExecSQL() {
  Close();
  if (connection_ && !connection_->Connected()) connection_->Open();
  return InternalExecute();
}

void TmvDataSet::Prepare() {
  if (prepared_) return;
  if (connection_ && !connection_->Connected()) connection_->Open();
  fieldDefs_.Clear();
  InternalPrepare(fieldDefs_);
  prepared_ = true;
}

void TmvDataSet::Unprepare() {
  if (!prepared_) return;
  prepared_ = false;
  InternalUnprepare();
}

void TmvDataSet::ConnectionClosing() {
  Close();
  Unprepare();
}

TmvConnection& TmvDataSet::RequireConnection() {
  if (!connection_) RaiseError(u"The dataset has no connection");
  if (!connection_->Connected()) connection_->Open();
  return *connection_;
}

const TmvParam& TmvDataSet::BoundParam(WideStringView name) const {
  const TmvParam* param = params_.FindParam(name);
  if (!param || !param->Bound()) RaiseError(WideFormat(u"No value for parameter '%s'", {name}));
  return *param;
}

void TmvDataSet::RaiseError(WideString message) const { throw EmvQueryBuilderError(commandText_, std::move(message)); }

}  // namespace mv
