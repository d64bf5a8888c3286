#include "metadata/dataset/Connection.h"

#include <algorithm>

namespace mv {

TmvConnection::~TmvConnection() {
  std::lock_guard lock(datasetsMutex_);
  for (TmvDataSet* dataset : datasets_) dataset->ConnectionFreed();
}

void TmvConnection::Open() {
  if (connected_) return;
  DoOpen();
  connected_ = true;
}

void TmvConnection::Close() {
  if (!connected_) return;
  CloseDataSets();
  connected_ = false;
  DoClose();
}

void TmvConnection::CloseDataSets() {
  std::vector<TmvDataSet*> datasets;
  {
    std::lock_guard lock(datasetsMutex_);
    datasets = datasets_;
  }
  for (TmvDataSet* dataset : datasets) dataset->ConnectionClosing();
}

std::unique_ptr<TmvDataSet> TmvConnection::CreateQuery(WideStringView sql) {
  std::unique_ptr<TmvDataSet> query = CreateQuery();
  query->SetCommandText(sql);
  return query;
}

std::unique_ptr<TmvDataSet> TmvConnection::OpenQuery(WideStringView sql, const TmvParams* params) {
  std::unique_ptr<TmvDataSet> query = CreateQuery(sql);
  if (params) query->Params().AssignValues(*params);
  query->Open();
  return query;
}

int64_t TmvConnection::ExecSQL(WideStringView sql, const TmvParams* params) {
  std::unique_ptr<TmvDataSet> query = CreateQuery(sql);
  if (params) query->Params().AssignValues(*params);
  return query->ExecSQL();
}

void TmvConnection::RegisterDataSet(TmvDataSet* dataset) {
  std::lock_guard lock(datasetsMutex_);
  datasets_.push_back(dataset);
}

void TmvConnection::UnregisterDataSet(TmvDataSet* dataset) {
  std::lock_guard lock(datasetsMutex_);
  datasets_.erase(std::remove(datasets_.begin(), datasets_.end(), dataset), datasets_.end());
}

}  // namespace mv
