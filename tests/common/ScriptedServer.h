// A scripted server for catalog tests: a memory connection that answers the
// statements it is given (and refuses any other) with the metadata provider
// over it, text tables to answer with, and the check of the objects a load
// put into a container.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/MemoryDataSet.h"

namespace mvtest {

// Columns of text `width` wide holding `rows`.
inline mv::TmvMemoryTable TextTable(std::initializer_list<const char16_t*> columns,
                                    std::initializer_list<std::vector<mv::TmvVariant>> rows, int width = 32) {
  mv::TmvMemoryTable table;
  for (const char16_t* name : columns) table.AddColumn(name, mv::ftWideString, width);
  for (const auto& row : rows) table.AddRow(row);
  return table;
}

// One text column `name` with a row for each value.
inline mv::TmvMemoryTable TextColumn(const char16_t* name, std::initializer_list<const char16_t*> values) {
  mv::TmvMemoryTable table;
  table.AddColumn(name, mv::ftWideString, 32);
  for (const char16_t* value : values) table.AddRow({mv::TmvVariant(mv::WideString(value))});
  return table;
}

// The connection, open, and `metadata` reading through it.
class ScriptedServer : public mv::TmvMemoryConnection {
 public:
  ScriptedServer() {
    metadata.SetConnection(this);
    Open();
  }
  mv::TmvConnectionMetadataProvider metadata;
};

// A catalog test over one dialect: the scripted server, open, whose
// metadata provider the context reads through, the dialect's provider and a
// container set on the context.
template <class Provider>
class CatalogFixture : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
  void SetUp() override {
    metadata_.SetConnection(&server_);
    server_.Open();
    Use(provider_);
    container_ = mv::TmvCreate<mv::TmvMetadataContainer>(nullptr, &context_);
    context_.SetMetadataContainer(container_.get());
  }
  void TearDown() override {
    context_.SetMetadataContainer(nullptr);
    container_.reset();
    context_.SetMetadataProvider(nullptr);
    context_.SetSyntaxProvider(nullptr);
  }
  // Puts `provider` (this fixture's or another) on the context.
  void Use(Provider& provider) {
    context_.SetSyntaxProvider(&provider);
    context_.SetMetadataProvider(&metadata_);
  }
  // The statements the server received, in order.
  std::vector<mv::WideString> Sent() const {
    std::vector<mv::WideString> sent;
    for (const auto& statement : server_.Received()) sent.push_back(statement.Sql);
    return sent;
  }

  mv::TmvMemoryConnection server_;
  mv::TmvConnectionMetadataProvider metadata_;
  Provider provider_;
  mv::TmvBaseSQLContext context_;
  mv::TmvOwned<mv::TmvMetadataContainer> container_;
};

// An object a load should have put into the container, in its place.
struct ExpectedObject {
  const char16_t* name;  // schema.name
  const char* kind;      // the metadata class
  bool system;
};

inline void ExpectObjects(const mv::TmvMetadataContainer& container, std::initializer_list<ExpectedObject> expected) {
  ASSERT_EQ(container.Count(), static_cast<int>(expected.size()));
  int i = 0;
  for (const ExpectedObject& e : expected) {
    const mv::TmvMetadataObject* object = container.Items(i++);
    EXPECT_EQ(object->SchemedNameStrNotQuoted(), e.name) << i;
    EXPECT_EQ(object->ClassType().ClassName(), e.kind) << i;
    EXPECT_EQ(object->System(), e.system) << i;
  }
}

}  // namespace mvtest
