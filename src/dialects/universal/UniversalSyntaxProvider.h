// The universal provider: one lenient grammar for text of any server, with
// what depends on the server (case of names, quotes, joins, databases and
// schemas) taken from the server descriptor in use. The descriptor in use
// starts as the preferred one and moves when the server is detected again
// (RedetectServer) or set (SetUsedServer); the metadata operations that need
// a connection detect it first, or take the preferred server when
// AutoDetectServer is off.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"
#include "dialects/universal/ServerDescriptors.h"

namespace mv {

class TmvUniversalSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvUniversalSyntaxProvider();

  // Registers the provider class with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  // The base's settings, PreferredServer and UsedServer.
  void Assign(const TmvPersistent* source) override;

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  bool IsFixedSizeType(WideStringView typeName) const override;
  // The scanner opens a quoted name with any server's quote, so a name that
  // starts with one of them stands only in quotes.
  bool IsValidIdent(WideStringView text) const override;
  // The base's names, then those of BuiltinFunctionNames.
  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;

  // --- Properties. ---
  const std::vector<WideString>& GetBuiltinFunctionNamesProperty() const { return builtinFunctionNames_; }
  void SetBuiltinFunctionNames(std::vector<WideString> names);
  TmvUniversalSyntaxServerType GetPreferredServer() const { return preferred_->ServerType(); }
  // The server tried first; not by itself the one used.
  void SetPreferredServer(TmvUniversalSyntaxServerType type);
  TmvUniversalSyntaxServerType GetUsedServer() const { return used_->ServerType(); }
  void SetUsedServer(TmvUniversalSyntaxServerType type);
  bool GetAutoDetectServer() const { return autoDetectServer_; }
  void SetAutoDetectServer(bool value) { autoDetectServer_ = value; }

  const TmvUnknownServerDescriptor& PreferredDescriptor() const { return *preferred_; }
  const TmvUnknownServerDescriptor& UsedDescriptor() const { return *used_; }
  // The descriptor of that server: the list, then the unknown one; raises
  // when none has the type.
  TmvUnknownServerDescriptor& FindServerDescriptorByServerType(TmvUniversalSyntaxServerType type) const;

  // --- Detection. ---
  // The server behind the context's metadata provider, by the probes of the
  // descriptors: the preferred, the one in use, then the others in order;
  // only a sure answer counts. Unknown when none is sure; the preferred one
  // without a connection.
  TmvUniversalSyntaxServerType DetectServer(TmvBaseSQLContext* context, TmvObject* owner) const;
  // Makes the detected server the one in use.
  void RedetectServer(TmvBaseSQLContext* context, TmvObject* owner);

  // --- Metadata: the descriptor in use first, the base when it has nothing. ---
  void GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                        std::vector<WideString>& list) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                             TSQLIdentifiersCollection& names) override;

  // The descriptor in use answers the case, the quotes and five capabilities.
  bool DescriptorCapability(TmvCapability capability) const override;
  WideString DescriptorQuote(bool begin) const override;
  TmvIdentCaseSensitivity DescriptorIdentCaseSens() const override { return used_->IdentCaseSens(); }

 private:
  const TmvUnknownServerDescriptor& DetectServerInternal(TmvBaseSQLContext* context, TmvObject* owner) const;
  // Before the operations that list what the server holds.
  void ChooseServer(TmvBaseSQLContext* context);
  void SetUsedDescriptor(TmvUnknownServerDescriptor& descriptor);

  std::vector<std::unique_ptr<TmvUnknownServerDescriptor>> descriptors_;
  TmvUnknownServerDescriptor unknown_;
  TmvUnknownServerDescriptor* preferred_;
  TmvUnknownServerDescriptor* used_;
  std::vector<WideString> builtinFunctionNames_;
  bool autoDetectServer_ = true;
};

}  // namespace mv
