// A syntax provider with settable answers and a fixture with a context and a
// container on it, for the metadata model tests.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "ReferenceDialect.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "tree/QualifiedNamesList.h"

namespace mv::test {

// The SQL-92 dialect with its name rules settable: case sensitive and
// folding to upper case unless a test says otherwise.
class TMetadataTestProvider : public mvtest::TReferenceDialectProvider {
 public:
  TMetadataTestProvider() { SetIdentCaseSens(icsSensitiveUpperCase); }

  bool databases = true;
  bool schemas = true;
  bool groupByAlias = false;
  bool orderByAlias = true;
  WideString upperFunction = u"upper";

  bool IsSupportDatabases() const override { return databases; }
  bool IsSupportSchemas() const override { return schemas; }
  bool IsSupportGroupByAlias() const override { return groupByAlias; }
  bool IsSupportOrderByAlias() const override { return orderByAlias; }
  WideString GetUpperCaseFunctionName() const override { return upperFunction; }
};

class MetadataTest : public ::testing::Test {
 protected:
  MetadataTest() {
    context.SetSyntaxProvider(&provider);
    container = TmvCreate<TmvMetadataContainer>(nullptr, &context);
    context.SetMetadataContainer(container.get());
  }
  ~MetadataTest() override {
    context.SetMetadataContainer(nullptr);
    container.reset();
    context.SetSyntaxProvider(nullptr);
  }

  TmvOwned<TastTokenIdentifier> Id(WideStringView text, bool quoted = false) {
    return TastCreate<TastTokenIdentifier>(&context, text, quoted);
  }
  // A name written outermost first: Name({u"db", u"dbo", u"t"}) holds [t, dbo, db].
  TmvOwned<TSQLQualifiedName> Name(std::initializer_list<const char16_t*> parts, bool quoted = false) {
    TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(&context);
    for (const char16_t* part : parts) name->AddName(part, quoted);
    return name;
  }
  TmvMetadataTable* Table(std::initializer_list<const char16_t*> parts) {
    return container->AddTable(Name(parts).get());
  }
  TmvMetadataView* View(std::initializer_list<const char16_t*> parts) { return container->AddView(Name(parts).get()); }
  void SetDefaults(std::initializer_list<const char16_t*> database, std::initializer_list<const char16_t*> schemas) {
    container->SetDefaultDatabaseName(Name(database).get());
    container->DefaultSchemaNames()->Clear();
    for (const char16_t* schema : schemas) container->DefaultSchemaNames()->AddIdentifier(schema);
  }

  TMetadataTestProvider provider;
  TmvBaseSQLContext context;
  TmvOwned<TmvMetadataContainer> container;
};

}  // namespace mv::test
