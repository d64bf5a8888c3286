#include "CatalogLines.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "ChinookLoader.h"
#include "ReferenceDialect.h"
#include "RunTool.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/MetadataRelation.h"
#include "metadata/dataset/SQLiteCatalog.h"
#include "metadata/dataset/SQLiteConnection.h"

namespace mvtest {

using namespace mv;

std::vector<std::string> CatalogLines(const TmvMetadataContainer& container, const ObjectTest& keep,
                                      const FieldText& describe) {
  std::vector<std::string> lines;
  for (int i = 0; i < container.Count(); ++i) {
    const TmvMetadataObject* object = container.Items(i);
    if (!keep(*object)) continue;
    const std::string name = UTF8Encode(object->NameStrNotQuoted());
    lines.push_back(name);
    for (int f = 0; f < object->GetFields()->Count(); ++f) {
      const TmvMetadataField* field = object->GetFields()->Items(f);
      lines.push_back(name + "." + UTF8Encode(field->NameStrNotQuoted()) + " " + describe(*field));
    }
  }
  const auto fields = [](const TmvMetadataQualifiedNamesList* list) {
    std::string text;
    for (int i = 0; i < list->Count(); ++i)
      text += (i ? "," : "") + UTF8Encode(list->Items(i)->GetQualifiedNameWithoutQuotes());
    return text;
  };
  for (TmvMetadataRelation* relation : container.GetRelations())
    if (keep(*relation->GetKeyMetadataObject()))
      lines.push_back(UTF8Encode(relation->GetKeyMetadataObject()->NameStrNotQuoted()) + " -> " +
                      UTF8Encode(relation->ChildNameStrNotQuoted()) + " [" + fields(relation->KeyFields()) + "] [" +
                      fields(relation->ChildFields()) + "]");
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::vector<std::string> SqliteChinookCatalogLines(const FieldText& describe) {
  // SQLite's names: no databases, no schemas, no case rule.
  class TLiteProvider : public TReferenceDialectProvider {
   public:
    TLiteProvider() { SetIdentCaseSens(icsNonSensitive); }
    bool IsSupportDatabases() const override { return false; }
    bool IsSupportSchemas() const override { return false; }
  };
  TempFile copy("", ".sqlite");
  std::filesystem::copy_file(ChinookSqlitePath(), copy.path(), std::filesystem::copy_options::overwrite_existing);
  {
    SqliteDatabase writable(copy.path(), true);
    for (const std::string& statement : HostileNamesSql()) writable.Exec(statement);
  }
  TmvSQLiteConnection lite(UTF8Decode(copy.path()), somReadOnly);
  TLiteProvider provider;
  TmvBaseSQLContext context;
  context.SetSyntaxProvider(&provider);
  TmvConnectionMetadataProvider metadata;
  metadata.SetConnection(&lite);
  context.SetMetadataProvider(&metadata);
  std::vector<std::string> lines;
  {
    auto container = TmvCreate<TmvMetadataContainer>(nullptr, &context);
    context.SetMetadataContainer(container.get());
    LoadSQLiteCatalog(&context, container.get());
    lines = CatalogLines(*container, [](const TmvMetadataObject&) { return true; }, describe);
    context.SetMetadataContainer(nullptr);
  }
  context.SetMetadataProvider(nullptr);
  context.SetSyntaxProvider(nullptr);
  return lines;
}

std::string NullAndKey(const TmvMetadataField& field) {
  return std::string(field.Nullable() && !field.PrimaryKey() ? " null" : "") + (field.PrimaryKey() ? " pk" : "");
}

int ClosedLoopbackPort() {
  const int s = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address);
  socklen_t length = sizeof address;
  getsockname(s, reinterpret_cast<sockaddr*>(&address), &length);
  close(s);
  return ntohs(address.sin_port);
}

}  // namespace mvtest
