// The server descriptors of the universal provider: what depends on the
// server behind a universal provider (the case of names, five capability
// answers, the quotes) and the metadata operations for it. The unknown
// descriptor is the base and stands for a server no probe recognised; each
// other descriptor gives its server's answers, in the order of
// TmvUniversalSyntaxServerType.
//
// The probes and catalog queries of the servers are not part of this build:
// IsSupportConnectedServer answers scsDontKnow and the metadata operations
// report no success, so the universal provider falls back on the base.
#pragma once

#include <memory>
#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mv {

enum TmvUniversalSyntaxServerType : uint8_t {
  ustMSSQL,
  ustMSAccess,
  ustMySQL,
  ustOracle,
  ustPostgreSQL,
  ustFirebird,
  ustInterbase,
  ustDB2,
  ustSybase,
  ustInformix,
  ustSQLite,
  ustUnknown,
};

class TSQLIdentifiersCollection;

class TmvUnknownServerDescriptor {
 public:
  TmvUnknownServerDescriptor();
  virtual ~TmvUnknownServerDescriptor() = default;
  TmvUnknownServerDescriptor(const TmvUnknownServerDescriptor&) = delete;
  TmvUnknownServerDescriptor& operator=(const TmvUnknownServerDescriptor&) = delete;

  virtual TmvIdentCaseSensitivity IdentCaseSens() const;
  virtual bool IsForceBinaryANSIJoins() const;
  virtual bool IsSupportCrossJoin() const;
  virtual bool IsUniversalExpressions() const;
  virtual bool IsSupportDatabases() const;
  virtual bool IsSupportSchemas() const;
  virtual WideString QuoteBegin() const;
  virtual WideString QuoteEnd() const;
  virtual TmvUniversalSyntaxServerType ServerType() const;
  virtual TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                                 TmvObject* owner) const;
  // Each reports whether it did the work; false leaves it to the provider's base.
  virtual bool GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection,
                                      TmvOwned<TSQLQualifiedName>& name);
  virtual bool GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TSQLIdentifiersCollection& names);
  virtual bool GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);
  virtual bool LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database);
  virtual bool LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                     const TSQLQualifiedName* database);

  // The answers of the descriptor table for a server.
  struct Answers {
    TmvUniversalSyntaxServerType serverType;
    TmvIdentCaseSensitivity identCaseSens;
    bool forceBinaryJoins;
    bool crossJoin;
    bool universalExpressions;
    bool databases;
    bool schemas;
    const char16_t* quoteBegin;
    const char16_t* quoteEnd;
  };

 protected:
  explicit TmvUnknownServerDescriptor(TmvUniversalSyntaxServerType serverType);

 private:
  const Answers& answers_;
};

#define MV_DECLARE_SERVER_DESCRIPTOR(Class, type)                            \
  class Class : public TmvUnknownServerDescriptor {                          \
   public:                                                                   \
    Class() : TmvUnknownServerDescriptor(type) {}                           \
  };

MV_DECLARE_SERVER_DESCRIPTOR(TmvMSSQLDescriptor, ustMSSQL)
MV_DECLARE_SERVER_DESCRIPTOR(TmvMSAccessDescriptor, ustMSAccess)
MV_DECLARE_SERVER_DESCRIPTOR(TmvMySQLDescriptor, ustMySQL)
MV_DECLARE_SERVER_DESCRIPTOR(TmvOracleDescriptor, ustOracle)
MV_DECLARE_SERVER_DESCRIPTOR(TmvPostgreSQLDescriptor, ustPostgreSQL)
MV_DECLARE_SERVER_DESCRIPTOR(TmvFirebirdDescriptor, ustFirebird)
MV_DECLARE_SERVER_DESCRIPTOR(TmvInterbaseDescriptor, ustInterbase)
MV_DECLARE_SERVER_DESCRIPTOR(TmvDB2Descriptor, ustDB2)
MV_DECLARE_SERVER_DESCRIPTOR(TmvSybaseDescriptor, ustSybase)
MV_DECLARE_SERVER_DESCRIPTOR(TmvInformixDescriptor, ustInformix)
MV_DECLARE_SERVER_DESCRIPTOR(TmvSQLiteDescriptor, ustSQLite)

#undef MV_DECLARE_SERVER_DESCRIPTOR

// The eleven descriptors of the known servers, in the order of the enumeration.
std::vector<std::unique_ptr<TmvUnknownServerDescriptor>> CreateServerDescriptors();

}  // namespace mv
