// A query builder on the reference dialect, for the tests that push whole
// collections of statements through it: parse, plain print, round trip.
#pragma once

#include <string>

#include "ReferenceDialect.h"
#include "component/QueryBuilder.h"
#include "frontend/SQLContext.h"
#include "support/MainThread.h"
#include "support/WideString.h"
#include "tree/SelectStatement.h"

namespace mvtest {

class TReferenceBuilder {
 public:
  TReferenceBuilder() {
    builder->SetSyntaxProvider(provider.get());
    builder->OnSQLUpdated = [this](mv::TmvQueryModelHost*) { ++updates; };
  }
  ~TReferenceBuilder() { mv::MainThreadDispatcher().ProcessPending(); }

  mv::TmvQueryBuilder* operator->() const { return builder.get(); }

  // Whether the reference dialect reads the text as a SELECT.
  bool Parses(const mv::WideString& text) {
    try {
      builder->SQLContext()->ParseSelect(text);
      return true;
    } catch (const mv::Exception&) {
      return false;
    }
  }
  // The statement parsed, fixed up and printed on one line, as the builder
  // prints its own model, but without the model in between.
  mv::WideString Plain(const mv::WideString& text) {
    mv::TmvOwned<mv::TSQLSelectStatement> statement = builder->ParseSQL(text);
    return statement->SimpleSQL(builder->SQLContext()->SQLBuilderExpressionForServer());
  }
  // The text loaded into the model and printed from it. The builder's
  // deferred calls run before the next statement.
  mv::WideString RoundTrip(const mv::WideString& text) {
    builder->SetSql(text);
    mv::MainThreadDispatcher().ProcessPending();
    return builder->GetSql();
  }

  // OnSQLUpdated events so far.
  int updates = 0;
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = NewReferenceProvider();
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
};

inline std::string ToUtf8(const mv::WideString& text) { return mv::UTF8Encode(text); }

}  // namespace mvtest
