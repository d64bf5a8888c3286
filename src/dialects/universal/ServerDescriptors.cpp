#include "dialects/universal/ServerDescriptors.h"

#include <iterator>

namespace mv {

namespace {

using Answers = TmvUnknownServerDescriptor::Answers;

// Case, force binary joins, cross join, universal expressions, databases,
// schemas, quotes.
constexpr Answers kAnswers[] = {
    {ustMSSQL, icsNonSensitive, false, true, false, true, true, u"[", u"]"},
    {ustMSAccess, icsNonSensitive, true, false, true, false, false, u"[", u"]"},
    {ustMySQL, icsSensitiveUpperCase, false, true, true, true, false, u"`", u"`"},
    {ustOracle, icsSensitiveUpperCase, false, true, false, false, true, u"\"", u"\""},
    {ustPostgreSQL, icsSensitiveLowerCase, false, true, true, true, true, u"\"", u"\""},
    {ustFirebird, icsSensitiveUpperCase, false, false, false, false, false, u"\"", u"\""},
    {ustInterbase, icsSensitiveUpperCase, false, false, false, false, false, u"\"", u"\""},
    {ustDB2, icsSensitiveUpperCase, false, true, false, true, true, u"\"", u"\""},
    {ustSybase, icsNonSensitive, false, true, false, true, true, u"[", u"]"},
    {ustInformix, icsSensitiveUpperCase, false, true, false, true, true, u"\"", u"\""},
    {ustSQLite, icsSensitiveUpperCase, false, true, false, false, false, u"\"", u"\""},
    {ustUnknown, icsNonSensitive, false, true, false, true, true, u"\"", u"\""},
};

static_assert(std::size(kAnswers) == ustUnknown + 1);

}  // namespace

TmvUnknownServerDescriptor::TmvUnknownServerDescriptor() : answers_(kAnswers[ustUnknown]) {}

TmvUnknownServerDescriptor::TmvUnknownServerDescriptor(TmvUniversalSyntaxServerType serverType)
    : answers_(kAnswers[serverType]) {}

TmvIdentCaseSensitivity TmvUnknownServerDescriptor::IdentCaseSens() const { return answers_.identCaseSens; }
bool TmvUnknownServerDescriptor::IsForceBinaryANSIJoins() const { return answers_.forceBinaryJoins; }
bool TmvUnknownServerDescriptor::IsSupportCrossJoin() const { return answers_.crossJoin; }
bool TmvUnknownServerDescriptor::IsUniversalExpressions() const { return answers_.universalExpressions; }
bool TmvUnknownServerDescriptor::IsSupportDatabases() const { return answers_.databases; }
bool TmvUnknownServerDescriptor::IsSupportSchemas() const { return answers_.schemas; }
WideString TmvUnknownServerDescriptor::QuoteBegin() const { return answers_.quoteBegin; }
WideString TmvUnknownServerDescriptor::QuoteEnd() const { return answers_.quoteEnd; }
TmvUniversalSyntaxServerType TmvUnknownServerDescriptor::ServerType() const { return answers_.serverType; }

TmvSyntaxSupportConectedServer TmvUnknownServerDescriptor::IsSupportConnectedServer(TmvBaseMetadataProvider*,
                                                                                   TmvObject*) const {
  return scsDontKnow;
}

bool TmvUnknownServerDescriptor::GetDefaultDatabaseName(TmvBaseSQLContext*, TmvConnection*,
                                                        TmvOwned<TSQLQualifiedName>&) {
  return false;
}

bool TmvUnknownServerDescriptor::GetDefaultSchemaNames(TmvBaseSQLContext*, TmvConnection*,
                                                       TSQLIdentifiersCollection&) {
  return false;
}

bool TmvUnknownServerDescriptor::GetDatabasesList(TmvBaseSQLContext*, TmvConnection*, std::vector<WideString>&) {
  return false;
}

bool TmvUnknownServerDescriptor::LoadMetadataObjects(TmvBaseSQLContext*, TmvConnection*, TmvMetadataContainer*,
                                                     const TmvMetadataFilter*, const TSQLQualifiedName*) {
  return false;
}

bool TmvUnknownServerDescriptor::LoadMetadataRelations(TmvBaseSQLContext*, TmvConnection*, TmvMetadataContainer*,
                                                       const TmvMetadataFilter*, const TSQLQualifiedName*) {
  return false;
}

std::vector<std::unique_ptr<TmvUnknownServerDescriptor>> CreateServerDescriptors() {
  std::vector<std::unique_ptr<TmvUnknownServerDescriptor>> list;
  list.push_back(std::make_unique<TmvMSSQLDescriptor>());
  list.push_back(std::make_unique<TmvMSAccessDescriptor>());
  list.push_back(std::make_unique<TmvMySQLDescriptor>());
  list.push_back(std::make_unique<TmvOracleDescriptor>());
  list.push_back(std::make_unique<TmvPostgreSQLDescriptor>());
  list.push_back(std::make_unique<TmvFirebirdDescriptor>());
  list.push_back(std::make_unique<TmvInterbaseDescriptor>());
  list.push_back(std::make_unique<TmvDB2Descriptor>());
  list.push_back(std::make_unique<TmvSybaseDescriptor>());
  list.push_back(std::make_unique<TmvInformixDescriptor>());
  list.push_back(std::make_unique<TmvSQLiteDescriptor>());
  return list;
}

}  // namespace mv
