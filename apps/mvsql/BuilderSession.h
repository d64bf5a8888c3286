// A query builder as the roundtrip and edit commands use it: the dialect of
// --dialect, the metadata of --metadata FILE.xml or --sqlite FILE in the
// builder's own container, and the query printed formatted or on one line.
#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "Arguments.h"
#include "MetadataSource.h"
#include "component/QueryBuilder.h"

namespace mvsql {

class BuilderSession {
 public:
  // Raises UsageError for an unknown dialect or both metadata options,
  // mv::Exception for metadata that cannot be read.
  explicit BuilderSession(const Arguments& arguments);
  ~BuilderSession();
  BuilderSession(const BuilderSession&) = delete;
  BuilderSession& operator=(const BuilderSession&) = delete;

  mv::TmvQueryBuilder& Builder() { return *builder_; }

  // Sets the builder's SQL; a syntax error goes to `err` and gives false.
  bool LoadSql(const mv::WideString& text, std::ostream& err);

  // The query in UTF-8, ended by CR LF: laid out by the formatting builder
  // from the result tree, or on one line as GetSql gives it. An empty query
  // is an empty line.
  std::string Print(bool oneLine);

 private:
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider_;
  mv::TmvOwned<mv::TmvQueryBuilder> builder_;
  std::unique_ptr<MetadataSource> metadata_;
};

// The options both commands take beside their own.
inline constexpr const char* kBuilderUsage =
    "  --dialect NAME        the dialect: a short name (sql92) or a provider class name (default sql92)\n"
    "  --metadata FILE.xml   the builder's metadata from a metadata XML file\n"
    "  --sqlite FILE         the builder's metadata from the catalog of a SQLite database\n"
    "  --one-line            the query on one line, as the builder gives its text\n";

}  // namespace mvsql
