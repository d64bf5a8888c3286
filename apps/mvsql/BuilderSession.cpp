#include "BuilderSession.h"

#include "Command.h"
#include "DialectNames.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/MainThread.h"
#include "tree/SelectStatement.h"

namespace mvsql {

BuilderSession::BuilderSession(const Arguments& arguments)
    : provider_(CreateDialect(arguments.Value("dialect", "sql92"))),
      builder_(mv::TmvCreate<mv::TmvQueryBuilder>()) {
  if (arguments.Has("metadata") && arguments.Has("sqlite"))
    throw UsageError{"give at most one of --metadata FILE.xml and --sqlite FILE"};
  builder_->SetSyntaxProvider(provider_.get());
  // Text that is no SELECT is refused as mvsql parse refuses it, rather
  // than held unchanged.
  builder_->AllowSleepMode = false;
  if (arguments.Has("metadata") || arguments.Has("sqlite")) {
    metadata_ = std::make_unique<MetadataSource>(*builder_->SQLContext(), *builder_->MetadataContainer());
    if (arguments.Has("metadata"))
      metadata_->LoadXml(arguments.Value("metadata"));
    else
      metadata_->LoadSQLite(arguments.Value("sqlite"));
  }
}

BuilderSession::~BuilderSession() {
  // The model lets go of the metadata before the source closes it.
  builder_->Clear();
  mv::MainThreadDispatcher().ProcessPending();
  metadata_.reset();
  builder_->SetSyntaxProvider(nullptr);
  builder_.reset();
  mv::MainThreadDispatcher().ProcessPending();
}

bool BuilderSession::LoadSql(const mv::WideString& text, std::ostream& err) {
  try {
    builder_->SetSql(text);
    return true;
  } catch (const mv::EmvSQLError& e) {
    err << mv::UTF8Encode(e.Message()) << "\n";
    return false;
  }
}

std::string BuilderSession::Print(bool oneLine) {
  mv::WideString text = builder_->GetSql();
  if (!oneLine && !text.empty()) {
    mv::TSQLBuilderPiped piped;
    text = builder_->GetResultQueryAST()->SimpleSQL(piped);
  }
  return mv::UTF8Encode(text) + "\r\n";
}

}  // namespace mvsql
