#include "dialects/universal/UniversalSyntaxProvider.h"

#include "UniversalPars.h"
#include "UniversalScan.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvUniversalSyntaxProvider, TmvBaseSyntaxProvider)

TmvUniversalSyntaxProvider::TmvUniversalSyntaxProvider()
    : TmvMatrixSyntaxProvider("TmvUniversalSyntaxProvider"),
      descriptors_(CreateServerDescriptors()),
      preferred_(descriptors_.front().get()),
      used_(preferred_),
      builtinFunctionNames_{u"Position",  u"Char_Length", u"Character_Length", u"Octet_Length",
                            u"Bit_Length", u"Extract",     u"SubString",        u"Upper",
                            u"Lower",      u"Convert",     u"Translate",        u"Trim",
                            u"Current_Time", u"Current_Timestamp", u"NullIf",  u"Coalesce"} {}

// No keyword resource of its own: GetKeywords finds the base provider's.
void TmvUniversalSyntaxProvider::RegisterDialect() { SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass()); }

void TmvUniversalSyntaxProvider::Assign(const TmvPersistent* source) {
  TmvMatrixSyntaxProvider::Assign(source);
  if (const auto* other = TmvCast<TmvUniversalSyntaxProvider>(source)) {
    SetPreferredServer(other->GetPreferredServer());
    SetUsedServer(other->GetUsedServer());
  }
}

const TmvScannerClass& TmvUniversalSyntaxProvider::GetScannerClass() const {
  return UNIVERSALScanner::ScannerClass();
}

const TmvParserClass& TmvUniversalSyntaxProvider::GetParserClass() const { return UNIVERSALParser::ParserClass(); }

std::vector<int32_t> TmvUniversalSyntaxProvider::GetStringTokenIds() const {
  return {UNIVERSALScanner::tkStringToken};
}

bool TmvUniversalSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  return !IsAnsiSizedType(typeName);
}

bool TmvUniversalSyntaxProvider::IsValidIdent(WideStringView text) const {
  return text.empty() || WideString(u"\"[`").find(text.front()) == WideString::npos;
}

void TmvUniversalSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  TmvMatrixSyntaxProvider::GetBuiltinFunctionNames(list);
  for (const WideString& name : builtinFunctionNames_) list.AddBuiltin(name);
}

void TmvUniversalSyntaxProvider::SetBuiltinFunctionNames(std::vector<WideString> names) {
  if (names == builtinFunctionNames_) return;
  builtinFunctionNames_ = std::move(names);
  SendNotifications();
}

// --- Descriptors ---

TmvUnknownServerDescriptor& TmvUniversalSyntaxProvider::FindServerDescriptorByServerType(
    TmvUniversalSyntaxServerType type) const {
  for (const auto& descriptor : descriptors_)
    if (descriptor->ServerType() == type) return *descriptor;
  if (unknown_.ServerType() == type) return const_cast<TmvUnknownServerDescriptor&>(unknown_);
  throw EmvQueryBuilderError(u"TmvUniversalSyntaxProvider.FindServerDescriptorByServerType: unknown server type");
}

void TmvUniversalSyntaxProvider::SetPreferredServer(TmvUniversalSyntaxServerType type) {
  preferred_ = &FindServerDescriptorByServerType(type);
}

void TmvUniversalSyntaxProvider::SetUsedServer(TmvUniversalSyntaxServerType type) {
  SetUsedDescriptor(FindServerDescriptorByServerType(type));
}

void TmvUniversalSyntaxProvider::SetUsedDescriptor(TmvUnknownServerDescriptor& descriptor) {
  if (&descriptor == used_) return;
  used_ = &descriptor;
  // Quotes and the case of names change with it.
  SendNotifications();
}

bool TmvUniversalSyntaxProvider::DescriptorCapability(TmvCapability capability) const {
  switch (capability) {
    case TmvCapability::IsForceBinaryANSIJoins:
      return used_->IsForceBinaryANSIJoins();
    case TmvCapability::IsSupportCrossJoin:
      return used_->IsSupportCrossJoin();
    case TmvCapability::IsUniversalExpressions:
      return used_->IsUniversalExpressions();
    case TmvCapability::IsSupportDatabases:
      return used_->IsSupportDatabases();
    case TmvCapability::IsSupportSchemas:
      return used_->IsSupportSchemas();
    default:
      return false;
  }
}

WideString TmvUniversalSyntaxProvider::DescriptorQuote(bool begin) const {
  return begin ? used_->QuoteBegin() : used_->QuoteEnd();
}

// --- Detection ---

const TmvUnknownServerDescriptor& TmvUniversalSyntaxProvider::DetectServerInternal(TmvBaseSQLContext* context,
                                                                                  TmvObject* owner) const {
  TmvBaseMetadataProvider* metadataProvider = context ? context->MetadataProvider() : nullptr;
  if (!metadataProvider || !metadataProvider->IsConnected()) return *preferred_;
  // A probe that fails counts as no support.
  auto supports = [&](const TmvUnknownServerDescriptor& descriptor) {
    try {
      return descriptor.IsSupportConnectedServer(metadataProvider, owner) == scsSupport;
    } catch (const std::exception&) {
      return false;
    }
  };
  if (supports(*preferred_)) return *preferred_;
  if (used_ != preferred_ && supports(*used_)) return *used_;
  for (const auto& descriptor : descriptors_)
    if (descriptor.get() != preferred_ && descriptor.get() != used_ && supports(*descriptor)) return *descriptor;
  return unknown_;
}

TmvUniversalSyntaxServerType TmvUniversalSyntaxProvider::DetectServer(TmvBaseSQLContext* context,
                                                                      TmvObject* owner) const {
  return DetectServerInternal(context, owner).ServerType();
}

void TmvUniversalSyntaxProvider::RedetectServer(TmvBaseSQLContext* context, TmvObject* owner) {
  SetUsedServer(DetectServer(context, owner));
}

void TmvUniversalSyntaxProvider::ChooseServer(TmvBaseSQLContext* context) {
  if (autoDetectServer_)
    RedetectServer(context, nullptr);
  else
    SetUsedServer(GetPreferredServer());
}

// --- Metadata ---

void TmvUniversalSyntaxProvider::GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  std::vector<WideString>& list) {
  ChooseServer(context);
  if (!used_->GetDatabasesList(context, connection, list))
    TmvMatrixSyntaxProvider::GetDatabasesList(context, connection, list);
}

void TmvUniversalSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                     const TSQLQualifiedName* database) {
  ChooseServer(context);
  if (!used_->LoadMetadataObjects(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvUniversalSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                       TmvMetadataContainer* container,
                                                       const TmvMetadataFilter* filter,
                                                       const TSQLQualifiedName* database) {
  if (!used_->LoadMetadataRelations(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

TmvOwned<TSQLQualifiedName> TmvUniversalSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                               TmvConnection* connection) {
  TmvOwned<TSQLQualifiedName> name;
  if (used_->GetDefaultDatabaseName(context, connection, name)) return name;
  return TmvMatrixSyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvUniversalSyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                       TSQLIdentifiersCollection& names) {
  if (!used_->GetDefaultSchemaNames(context, connection, names))
    TmvMatrixSyntaxProvider::GetDefaultSchemaNames(context, connection, names);
}

}  // namespace mv
