#include "component/MetadataLoadWizard.h"

#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/MariaDbConnection.h"
#include "metadata/dataset/OdbcConnection.h"
#include "metadata/dataset/PostgresConnection.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/BatchUpdatable.h"
#include "support/Exceptions.h"
#include "support/MessageCatalog.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

struct PageRow {
  const char16_t* title;
};

// In the order of TmvMetadataLoadWizard::Page.
constexpr PageRow kPages[] = {
    {u"Welcome to the Morvane Load Metadata Wizard"},
    {u"SQL Syntax Provider"},
    {u"Database Connection Type"},
    {u"Database Connection Options"},
    {u"Databases"},
    {u"Additional Metadata Filtration"},
    {u"Saving Metadata to XML File"},
    {u"Loading Metadata Process"},
};
static_assert(std::size(kPages) == TmvMetadataLoadWizard::kPageCount);

struct DriverRow {
  const char16_t* name;
  std::unique_ptr<TmvConnection> (*make)(const WideString& text);
};

const DriverRow kDrivers[] = {
    {u"SQLite", [](const WideString& t) -> std::unique_ptr<TmvConnection> {
       return std::make_unique<TmvSQLiteConnection>(t, somReadOnly);
     }},
    {u"PostgreSQL",
     [](const WideString& t) -> std::unique_ptr<TmvConnection> { return std::make_unique<TmvPostgresConnection>(t); }},
    {u"MariaDB",
     [](const WideString& t) -> std::unique_ptr<TmvConnection> { return std::make_unique<TmvMariaDbConnection>(t); }},
    {u"ODBC",
     [](const WideString& t) -> std::unique_ptr<TmvConnection> { return std::make_unique<TmvOdbcConnection>(t); }},
};

WideString CurrentDatabaseText() {
  static const bool registered = [] {
    if (!MessageCatalog().IsRegistered(u"mvQBMetadataTreeCurrentDatabase"))
      MessageCatalog().Register({{u"mvQBMetadataTreeCurrentDatabase", u"(current database)"}});
    return true;
  }();
  (void)registered;
  return MessageText(u"mvQBMetadataTreeCurrentDatabase");
}

[[noreturn]] void Refuse(WideStringView message) { throw EmvQueryBuilderError(WideString(message)); }

}  // namespace

// --- TmvConnectionFrame ---

const std::vector<WideString>& TmvConnectionFrame::Drivers() {
  static const std::vector<WideString> names = [] {
    std::vector<WideString> list;
    for (const DriverRow& row : kDrivers) list.emplace_back(row.name);
    return list;
  }();
  return names;
}

void TmvConnectionFrame::SetDriverIndex(int index) {
  if (index < 0 || index >= int(std::size(kDrivers))) throw EmvQueryBuilderError(u"No such driver");
  driverIndex_ = index;
}

TmvConnection* TmvConnectionFrame::MakeConnection() {
  if (host_) return host_;
  own_ = kDrivers[driverIndex_].make(text_);
  return own_.get();
}

// --- TmvMetadataLoadWizard ---

TmvMetadataLoadWizard::TmvMetadataLoadWizard(TmvMetadataContainer& target)
    : target_(target), filter_(std::make_unique<TmvMetadataFilter>()) {
  std::fill(std::begin(enabled_), std::end(enabled_), true);
  context_ = TmvCreate<TmvBaseSQLContext>();
  container_ = TmvCreate<TmvMetadataContainer>(nullptr, context_.get());
  context_->SetMetadataContainer(container_.get());
}

TmvMetadataLoadWizard::~TmvMetadataLoadWizard() {
  context_->SetMetadataContainer(nullptr);
  container_.reset();
  context_->SetMetadataProvider(nullptr);
  context_->SetSyntaxProvider(nullptr);
  metadataProvider_.reset();
  syntaxProvider_.reset();
}

WideString TmvMetadataLoadWizard::PageTitle(Page page) { return kPages[page].title; }

int TmvMetadataLoadWizard::NextEnabledPage(int from) const {
  for (int i = from + 1; i < kPageCount; ++i)
    if (enabled_[i]) return i;
  return -1;
}

int TmvMetadataLoadWizard::PreviousEnabled(int from) const {
  if (from == tsLoading) return -1;  // the load is not undone
  for (int i = from - 1; i >= 0; --i)
    if (enabled_[i]) return i;
  return -1;
}

bool TmvMetadataLoadWizard::LoadShown() const {
  const int next = NextEnabledPage(page_);
  return page_ != tsLoading && (next < 0 || next == tsLoading);
}

void TmvMetadataLoadWizard::Next() {
  if (page_ == tsLoading) return;
  Check(page_);
  const int next = NextEnabledPage(page_);
  if (next < 0 || next == tsLoading) return Load();
  BeforeShow(Page(next));
  page_ = Page(next);
}

void TmvMetadataLoadWizard::Back() {
  const int previous = PreviousEnabled(page_);
  if (previous >= 0 && !loading_) page_ = Page(previous);
}

void TmvMetadataLoadWizard::Check(Page page) {
  switch (page) {
    case tsSyntax:
      if (!syntaxProvider_) Refuse(u"Please select Syntax Provider to proceed.");
      break;
    case tsMetadata:
      if (!metadataProvider_) Refuse(u"Please select Connection Type to proceed.");
      // Without a frame the options page is off, and the connection opens here.
      if (!frame_) Connect();
      break;
    case tsMetadataOpts:
      Connect();
      break;
    case tsLoadOpts:
      if (std::none_of(databases_.begin(), databases_.end(), [](const Database& d) { return d.Checked; }))
        Refuse(u"You must select one or more databases to load metadata from!");
      break;
    case tsSaveToFile:
      if (fileName_.empty()) Refuse(u"You must specify File Name to save metadata!");
      break;
    default:
      break;
  }
}

void TmvMetadataLoadWizard::BeforeShow(Page page) {
  switch (page) {
    case tsSyntax:
      if (syntaxNames_.empty()) {
        for (const TmvSyntaxProviderClass* c : SyntaxProvidersList().Classes())
          if (!c->IsAbstract()) syntaxClasses_.push_back(c->ClassName());
        std::sort(syntaxClasses_.begin(), syntaxClasses_.end(),
                  [](std::string_view a, std::string_view b) {
                    return WideCompareText(WideFromAscii(a), WideFromAscii(b)) < 0;
                  });
        for (std::string_view name : syntaxClasses_) syntaxNames_.push_back(WideFromAscii(name));
      }
      break;
    case tsMetadata:
      if (connectionTypes_.empty())
        for (int i = 0; i < MetadataProvidersList().Count(); ++i)
          connectionTypes_.push_back(WideFromAscii(MetadataProvidersList().Items(i).ClassName()));
      break;
    default:
      break;
  }
}

void TmvMetadataLoadWizard::SetSyntaxIndex(int index) {
  if (index < 0 || index >= int(syntaxClasses_.size())) throw EmvQueryBuilderError(u"No such syntax provider");
  const TmvSyntaxProviderClass* c = SyntaxProvidersList().FindClassByClassName(syntaxClasses_[size_t(index)]);
  TmvOwned<TmvBaseSyntaxProvider> provider(c ? c->CreateRaw() : nullptr);
  if (!provider) throw EmvQueryBuilderError(u"No such syntax provider");
  context_->SetSyntaxProvider(provider.get());
  syntaxProvider_ = std::move(provider);
  syntaxIndex_ = index;
}

void TmvMetadataLoadWizard::SetConnectionTypeIndex(int index) {
  if (index < 0 || index >= MetadataProvidersList().Count()) throw EmvQueryBuilderError(u"No such connection type");
  TmvOwned<TmvBaseMetadataProvider> provider(MetadataProvidersList().Items(index).CreateRaw());
  if (!provider) throw EmvQueryBuilderError(u"No such connection type");
  context_->SetMetadataProvider(provider.get());
  metadataProvider_ = std::move(provider);
  connectionIndex_ = index;
  // BeforeMetadataOpts: the provider's connection objects and its frame.
  if (!metadataProvider_->GetConnectionObjectsCreated()) metadataProvider_->CreateAndBindInternalConnectionObj();
  const bool framed = metadataProvider_->InheritsFrom(TmvConnectionMetadataProvider::StaticClass());
  frame_ = framed ? std::make_unique<TmvConnectionFrame>() : nullptr;
  SetPageEnabled(framed, tsMetadataOpts);
}

bool TmvMetadataLoadWizard::ChooseSyntaxProvider(std::string_view className) {
  BeforeShow(tsSyntax);
  for (size_t i = 0; i < syntaxClasses_.size(); ++i)
    if (SameClassName(syntaxClasses_[i], className)) return SetSyntaxIndex(int(i)), true;
  return false;
}

bool TmvMetadataLoadWizard::ChooseConnectionType(std::string_view className) {
  for (int i = 0; i < MetadataProvidersList().Count(); ++i)
    if (SameClassName(MetadataProvidersList().Items(i).ClassName(), className)) return SetConnectionTypeIndex(i), true;
  return false;
}

void TmvMetadataLoadWizard::Connect() {
  try {
    if (metadataProvider_->Connected()) metadataProvider_->Disconnect();
    if (frame_) metadataProvider_->SetConnection(frame_->MakeConnection());
    // A provider without a connection (the host's events) has nothing to open.
    if (metadataProvider_->Connection()) metadataProvider_->Connect();
  } catch (const Exception& e) {
    Refuse(u"Can not connect to Database. Error message:\r\n" + e.Message());
  } catch (const std::exception& e) {
    Refuse(u"Can not connect to Database. Error message:\r\n" + UTF8Decode(e.what()));
  }
  LoadDatabasesList();
}

WideString TmvMetadataLoadWizard::TestConnection() {
  if (!metadataProvider_) return u"Test Connection Failed. Error message:\r\nPlease select Connection Type to proceed.";
  try {
    if (metadataProvider_->Connected()) metadataProvider_->Disconnect();
    if (frame_) metadataProvider_->SetConnection(frame_->MakeConnection());
    if (metadataProvider_->Connection()) metadataProvider_->Connect();
    return u"Test Connection Successful!";
  } catch (const Exception& e) {
    return u"Test Connection Failed. Error message:\r\n" + e.Message();
  } catch (const std::exception& e) {
    return u"Test Connection Failed. Error message:\r\n" + UTF8Decode(e.what());
  }
}

void TmvMetadataLoadWizard::LoadDatabasesList() {
  databases_.clear();
  TmvConnection* connection = metadataProvider_->Connection();
  const bool supported = syntaxProvider_->IsSupportDatabases();
  WideString defaultName;
  try {
    container_->SetDefaultDatabaseName(syntaxProvider_->GetDefaultDatabaseName(context_.get(), connection).get());
    defaultName = container_->DefaultDatabaseNameStr();
  } catch (const std::exception&) {
    // A server that does not name its database: the default one stays unnamed.
  }
  std::vector<WideString> names;
  if (supported) {
    try {
      context_->GetDatabasesList(connection, names);
    } catch (const std::exception&) {
      names.clear();  // no list from the server: the default database only
    }
  }
  if (names.empty()) names.push_back(defaultName);
  for (const WideString& name : names) {
    Database item;
    item.Name = name;
    item.Default = WideSameText(name, defaultName);
    item.Checked = item.Default;
    item.Caption = item.Default ? (name.empty() ? CurrentDatabaseText() : name + u" " + CurrentDatabaseText()) : name;
    databases_.push_back(std::move(item));
  }
  SetPageEnabled(supported && !databases_.empty(), tsLoadOpts);
}

// --- Filter page ---

void TmvMetadataLoadWizard::SetMetadataFilter(const TmvMetadataFilter* filter) {
  filter_->Clear();
  if (filter) filter_->Assign(filter);
  filterIndex_ = filter_->Count() > 0 ? 0 : -1;
}

void TmvMetadataLoadWizard::AddFilterItem() {
  filter_->Add();
  filterIndex_ = filter_->Count() - 1;
}

void TmvMetadataLoadWizard::RemoveFilterItem() {
  if (filterIndex_ < 0 || filterIndex_ >= filter_->Count()) return;
  filter_->Delete(filterIndex_);
  filterIndex_ = std::min(filterIndex_, filter_->Count() - 1);
}

void TmvMetadataLoadWizard::ClearFilterItems() {
  filter_->Clear();
  filterIndex_ = -1;
}

WideString TmvMetadataLoadWizard::FilterItemText(const TmvMetadataFilterItem& item) {
  WideString text = item.Exclude() ? u"- " : u"+ ";
  if (!item.SchemaMask().empty()) text += item.SchemaMask() + u".";
  text += item.ObjectMask().empty() ? WideString(u"%") : item.ObjectMask();
  text += u" (";
  if (item.ApplyFor() == kMetadataFilterAllKinds) {
    text += u"All";
  } else {
    static const char16_t* const kLetters[] = {u"T", u"V", u"P", u"S"};
    WideString kinds;
    for (int kind = mfTables; kind <= mfSynonyms; ++kind)
      if (item.AppliesTo(TmvMetadataFilterApplyFor(kind)))
        kinds += (kinds.empty() ? u"" : u",") + WideString(kLetters[kind]);
    text += kinds;
  }
  return text + u")";
}

void TmvMetadataLoadWizard::SetSaveToFile(bool value) {
  saveToFile_ = value;
  SetPageEnabled(value, tsSaveToFile);
}

// --- The load ---

void TmvMetadataLoadWizard::WriteLog(WideStringView line) {
  log_.emplace_back(line);
  if (OnLogChanged) OnLogChanged();
}

void TmvMetadataLoadWizard::AppendLog(WideStringView text) {
  if (log_.empty()) log_.emplace_back();
  log_.back() += text;
  if (OnLogChanged) OnLogChanged();
}

void TmvMetadataLoadWizard::Step(WideStringView title, const std::function<void()>& step) {
  WriteLog(title);
  try {
    step();
    AppendLog(u"success");
  } catch (const Exception& e) {
    AppendLog(u"Loading FAILED. Error message: " + e.Message());
  } catch (const std::exception& e) {
    AppendLog(u"Loading FAILED. Error message: " + UTF8Decode(e.what()));
  }
}

void TmvMetadataLoadWizard::Load() {
  page_ = tsLoading;
  loading_ = true;
  struct Done {
    bool& flag;
    ~Done() { flag = false; }
  } done{loading_};
  if (clearBeforeLoading_) target_.Clear();
  const bool perDatabase = syntaxProvider_ && syntaxProvider_->IsSupportDatabases() && !databases_.empty();
  if (perDatabase) {
    for (const Database& database : databases_)
      if (database.Checked) LoadDatabase(&database);
  } else {
    LoadDatabase(nullptr);
  }
  WriteLog(u"Loading completed successfully...");
  if (saveToFile_ && !fileName_.empty()) target_.SaveToXMLFile(fileName_);
  finished_ = true;
}

void TmvMetadataLoadWizard::LoadDatabase(const Database* database) {
  container_->Clear();
  TmvConnection* connection = metadataProvider_ ? metadataProvider_->Connection() : nullptr;
  TmvOwned<TSQLQualifiedName> name;
  if (database && !database->Default) {
    WriteLog(u"Loading metadata from database " + database->Name + u"...");
    TmvOwned<TastTokenIdentifier> schema;
    TmvOwned<TastTokenIdentifier> object;
    container_->ParseObjectNames(u"", u"", database->Name, schema, object, name);
  } else {
    WriteLog(u"Loading metadata from default database...");
  }
  const TmvMetadataFilter* filter = filter_.get();
  {
    TmvUpdateBatch batch(*container_);
    Step(u"Loading metadata object list...",
         [&] { context_->LoadMetadataObjects(connection, container_.get(), filter, name.get()); });
    Step(u"Loading metadata relation list...",
         [&] { context_->LoadMetadataRelations(connection, container_.get(), filter, name.get()); });
    Step(u"Loading custom aggregate list...",
         [&] { context_->LoadMetadataCustomAggregateNames(connection, container_.get(), name.get()); });
  }
  if (dontLoadSystem_)
    for (int i = container_->Count() - 1; i >= 0; --i)
      if (container_->Items(i)->System()) container_->Delete(i);
  WriteLog(WideFromAscii(std::to_string(container_->Count())) + u" objects found...");
  for (int i = 0; i < container_->Count(); ++i) {
    TmvMetadataObject* object = container_->Items(i);
    WriteLog(u"Loading fields list for object " + object->FullNameStr() + u"...");
    try {
      object->LoadFields(connection);
    } catch (const std::exception&) {
      // The flag below tells it.
    }
    AppendLog(object->GetFields()->Loaded() ? u"success" : u"FAILED");
  }
  WriteLog(u"Writing metadata to MetadataContainer...");
  std::vector<TmvOwned<TmvMetadataObject>> clones;
  for (int i = 0; i < container_->Count(); ++i)
    clones.push_back(container_->Items(i)->CloneAs<TmvMetadataObject>(&target_, target_.SQLContext()));
  TmvUpdateBatch batch(target_);
  if (IsQualifiedNameEmpty(target_.DefaultDatabaseName()) && !IsQualifiedNameEmpty(container_->DefaultDatabaseName()))
    target_.SetDefaultDatabaseName(container_->DefaultDatabaseName());
  if (target_.DefaultSchemaNames()->GetCount() == 0)
    target_.SetDefaultSchemaNamesStr(container_->DefaultSchemaNamesStr());
  for (TmvOwned<TmvMetadataObject>& clone : clones) target_.Add(std::move(clone));
  target_.SetLoaded(true);
}

}  // namespace mv
