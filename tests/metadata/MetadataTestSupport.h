// A syntax provider with settable answers and a fixture with a context and a
// container on it, for the metadata model tests.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "dialects/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "tree/QualifiedNamesList.h"

namespace mv::test {

class TMetadataTestProvider : public TmvBaseSyntaxProvider {
 public:
  bool databases = true;
  bool schemas = true;
  // Types printed with a size (the SQL-92 character and binary types).
  std::vector<WideString> sizedTypes = {u"char", u"varchar", u"nchar", u"nvarchar", u"binary", u"varbinary"};

  WideString upperFunction = u"upper";

  bool IsSupportDatabases() const override { return databases; }
  WideString GetUpperCaseFunctionName() const override { return upperFunction; }
  bool IsSupportSchemas() const override { return schemas; }
  bool IsFixedSizeType(WideStringView typeName) const override {
    for (const WideString& sized : sizedTypes)
      if (WideSameText(sized, typeName)) return false;
    return true;
  }
  // Letters, digits and "_", not starting with a digit.
  bool IsValidIdent(WideStringView text) const override {
    if (text.empty() || (text[0] >= u'0' && text[0] <= u'9')) return false;
    for (char16_t c : text)
      if (!((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_'))
        return false;
    return true;
  }
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
