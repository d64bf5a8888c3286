// A host that embeds the query engine: it creates a query builder on the
// SQL-92 dialect, gives it a query, hears when the SQL changes, adds a table
// to the query's first SELECT as a designer would, and prints the SQL the
// builder writes back.
#include <iostream>
#include <string>

#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "model/QueryTree.h"
#include "support/Exceptions.h"
#include "support/WideString.h"

namespace {

// The engine's text is UTF-16 with CR LF line ends; the console wants UTF-8
// with LF.
std::string ForConsole(const mv::WideString& text) {
  std::string out;
  for (char c : mv::UTF8Encode(text))
    if (c != '\r') out += c;
  return out;
}

}  // namespace

int main() {
  // Once per process, before anything else: registers the engine's messages
  // and its dialects.
  mv::InitializeEngine();

  // The dialect the builder parses and prints with. The builder does not own
  // it, so it is made first and outlives the builder.
  mv::TmvOwned<mv::TmvSQL92SyntaxProvider> provider = mv::TmvCreate<mv::TmvSQL92SyntaxProvider>();
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  builder->SetSyntaxProvider(provider.get());

  // Fired once per change of the query, whether it came as text or as an
  // edit of the model. The sender comes first, as in every event.
  int updates = 0;
  builder->OnSQLUpdated = [&updates](mv::TmvQueryModelHost*) {
    ++updates;
    std::cout << "SQL updated (" << updates << ")\n";
  };

  try {
    // Text into the model: a syntax error would be raised as an EmvSQLError
    // (or go to OnSQLError when the host sets it).
    builder->SetSql(u"SELECT o.OrderId, o.Total FROM Orders o WHERE o.Total > 100");
    std::cout << "SQL set:\n" << ForConsole(builder->GetSql()) << "\n";

    // An edit of the model: one more table in the FROM of the first SELECT.
    builder->Query()->FirstSelect()->AddObject(u"Customers", u"c");

    // The model back as text.
    std::cout << "SQL read back:\n" << ForConsole(builder->GetSql()) << "\n";
  } catch (const mv::Exception& e) {
    std::cerr << "mvhost: " << e.ClassName() << ": " << e.what() << "\n";
    return 1;
  }
  std::cout << "updates: " << updates << "\n";
  return 0;
}
