// The load metadata wizard without its widgets: a page table (title, a step
// before the page shows, a check before it is left, an enabled flag), the
// choices of syntax provider and connection type from the registries, the
// connection settings, the databases to load, the filter under edit, and the
// load itself, which writes a log line by line into a target container and,
// if asked, into an XML file. A form shows the pages and forwards the clicks.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "metadata/MetadataFilter.h"
#include "support/Class.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseMetadataProvider;
class TmvBaseSQLContext;
class TmvBaseSyntaxProvider;
class TmvConnection;
class TmvMetadataContainer;

// The connection settings of a provider on the engine's dataset layer: a
// driver of this build and its connection text (a file for SQLite, a
// connection string or URI for the servers). A host may hand its own open
// connection instead, which the frame then uses as it is.
class TmvConnectionFrame {
 public:
  // "SQLite", "PostgreSQL", "MariaDB", "ODBC".
  static const std::vector<WideString>& Drivers();
  int DriverIndex() const { return driverIndex_; }
  void SetDriverIndex(int index);
  const WideString& ConnectionText() const { return text_; }
  void SetConnectionText(WideStringView text) { text_ = WideString(text); }
  // Not owned; null goes back to the driver.
  void SetHostConnection(TmvConnection* connection) { host_ = connection; }
  // The host's connection, or a new unopened one of the driver (owned by the frame).
  TmvConnection* MakeConnection();

 private:
  int driverIndex_ = 0;
  WideString text_;
  TmvConnection* host_ = nullptr;
  std::unique_ptr<TmvConnection> own_;
};

class TmvMetadataLoadWizard {
 public:
  enum Page { tsWelcome, tsSyntax, tsMetadata, tsMetadataOpts, tsLoadOpts, tsFilter, tsSaveToFile, tsLoading };
  static constexpr int kPageCount = tsLoading + 1;
  struct Database {
    WideString Name;     // as SQL text; empty for the default database without a name
    WideString Caption;  // the default one followed by " (current database)"
    bool Default = false;
    bool Checked = false;
  };

  explicit TmvMetadataLoadWizard(TmvMetadataContainer& target);
  ~TmvMetadataLoadWizard();
  TmvMetadataLoadWizard(const TmvMetadataLoadWizard&) = delete;
  TmvMetadataLoadWizard& operator=(const TmvMetadataLoadWizard&) = delete;

  // --- Pages ---
  static WideString PageTitle(Page page);
  Page CurrentPage() const { return page_; }
  bool PageEnabled(Page page) const { return enabled_[page]; }
  void SetPageEnabled(bool enabled, Page page) { enabled_[page] = enabled; }
  // The current page's check (which raises with its message and keeps the
  // page), then the next enabled page after its step before showing.
  void Next();
  // The previous enabled page.
  void Back();
  // Load replaces Next on the last page before the loading one.
  bool LoadShown() const;
  bool BackEnabled() const { return !loading_ && PreviousEnabled(page_) >= 0; }
  bool NextEnabled() const { return !loading_ && page_ != tsLoading; }
  bool CloseEnabled() const { return !loading_; }
  // The load: on the loading page, with Back, Next and Close off while it runs.
  void Load();

  // --- Welcome ---
  bool ClearBeforeLoading() const { return clearBeforeLoading_; }
  void SetClearBeforeLoading(bool value) { clearBeforeLoading_ = value; }

  // --- Syntax provider and connection type (-1: none chosen) ---
  const std::vector<WideString>& SyntaxProviders() const { return syntaxNames_; }
  int SyntaxIndex() const { return syntaxIndex_; }
  void SetSyntaxIndex(int index);
  const std::vector<WideString>& ConnectionTypes() const { return connectionTypes_; }
  int ConnectionTypeIndex() const { return connectionIndex_; }
  void SetConnectionTypeIndex(int index);
  // Chooses by class name (without regard to case); false when it is not listed.
  bool ChooseSyntaxProvider(std::string_view className);
  bool ChooseConnectionType(std::string_view className);
  // The provider of the chosen connection type (owned by the wizard), for
  // the host's settings and events; null before a choice.
  TmvBaseMetadataProvider* MetadataProvider() const { return metadataProvider_.get(); }
  // The frame of the chosen connection type; null for a type without one.
  TmvConnectionFrame* Frame() const { return frame_.get(); }
  // "Test Connection Successful!" or "Test Connection Failed. Error message:" with the text.
  WideString TestConnection();

  // --- Databases ---
  std::vector<Database>& Databases() { return databases_; }

  // --- Filter ---
  void SetMetadataFilter(const TmvMetadataFilter* filter);
  TmvMetadataFilter& Filter() { return *filter_; }
  // The item being edited; -1 for none.
  int FilterIndex() const { return filterIndex_; }
  void SetFilterIndex(int index) { filterIndex_ = index; }
  void AddFilterItem();
  // Deletes the current item and selects its neighbour.
  void RemoveFilterItem();
  void ClearFilterItems();
  // "+ schema.object (T,V)" and the like.
  static WideString FilterItemText(const TmvMetadataFilterItem& item);
  bool DontLoadSystemObjects() const { return dontLoadSystem_; }
  void SetDontLoadSystemObjects(bool value) { dontLoadSystem_ = value; }

  // --- Saving ---
  bool SaveToFile() const { return saveToFile_; }
  // Switches the save page on or off.
  void SetSaveToFile(bool value);
  const WideString& FileName() const { return fileName_; }
  void SetFileName(WideStringView value) { fileName_ = WideString(value); }

  // --- Log ---
  const std::vector<WideString>& Log() const { return log_; }
  // After each change of the log, so that a form can show it during the load.
  std::function<void()> OnLogChanged;
  bool Finished() const { return finished_; }

 private:
  int NextEnabledPage(int from) const;
  int PreviousEnabled(int from) const;
  void Check(Page page);
  void BeforeShow(Page page);
  void Connect();
  void LoadDatabasesList();
  void LoadDatabase(const Database* database);
  void WriteLog(WideStringView line);
  void AppendLog(WideStringView text);
  // Runs a step and appends "success" or the failure to the last line.
  void Step(WideStringView title, const std::function<void()>& step);

  TmvMetadataContainer& target_;
  TmvOwned<TmvBaseSQLContext> context_;
  TmvOwned<TmvMetadataContainer> container_;
  TmvOwned<TmvBaseSyntaxProvider> syntaxProvider_;
  TmvOwned<TmvBaseMetadataProvider> metadataProvider_;
  std::unique_ptr<TmvConnectionFrame> frame_;
  std::unique_ptr<TmvMetadataFilter> filter_;
  std::vector<std::string_view> syntaxClasses_;
  std::vector<WideString> syntaxNames_;
  std::vector<WideString> connectionTypes_;
  std::vector<Database> databases_;
  std::vector<WideString> log_;
  WideString fileName_;
  Page page_ = tsWelcome;
  bool enabled_[kPageCount];
  int syntaxIndex_ = -1;
  int connectionIndex_ = -1;
  int filterIndex_ = -1;
  bool clearBeforeLoading_ = false;
  bool dontLoadSystem_ = false;
  bool saveToFile_ = true;
  bool loading_ = false;
  bool finished_ = false;
};

}  // namespace mv
