// The metadata XML file: a container written and read back is the same
// container, the written form is fixed (golden file), names of any text
// survive, foreign and older spellings are read, and a document the reader
// refuses says where and leaves the container as it was.
#include <gtest/gtest.h>

#include <pugixml.hpp>

#include <optional>
#include <sstream>
#include <string>

#include "MetadataTestSupport.h"
#include "RunTool.h"
#include "Thrown.h"
#include "metadata/MetadataXml.h"

using namespace mv;
using namespace mv::test;

namespace {

std::string DataFile(const std::string& name) { return std::string(MV_TEST_DATA_DIR) + "/metadata/" + name; }

class MetadataXmlTest : public MetadataTest {
 protected:
  // A second container on the same context, to read into.
  TmvOwned<TmvMetadataContainer> NewContainer() { return TmvCreate<TmvMetadataContainer>(nullptr, &context); }

  std::string Xml(TmvMetadataContainer& c) { return UTF8Encode(c.GetXML()); }

  TmvMetadataField* AddField(TmvMetadataObject* object, const char16_t* name, TFieldType type, int32_t size = 0,
                             bool nullable = true) {
    return object->GetFields()->AddField(Name({name}).get(), type, size, nullable);
  }

  TmvMetadataRelation* AddRelation(TmvMetadataObject* object, const char16_t* keyField,
                                   std::initializer_list<const char16_t*> child, const char16_t* childField,
                                   bool foreignKey) {
    TmvMetadataRelation* relation = object->GetRelations()->Add();
    relation->KeyFields()->Add(Id(keyField).get());
    relation->SetChildTable(Name(child).get());
    relation->ChildFields()->Add(Id(childField).get());
    relation->SetForeignKey(foreignKey);
    return relation;
  }

  // A container with every kind of content the file holds.
  void FillEverything(TmvMetadataContainer& c) {
    TmvUpdateBatch batch(c);
    c.SetDefaultDatabaseName(Name({u"srv", u"db"}).get());
    c.DefaultSchemaNames()->AddIdentifier(u"dbo");
    c.DefaultSchemaNames()->Insert(1)->Assign(*Id(u"Sales", true));
    c.CustomAggregateFunctions()->Add(Name({u"stats", u"median"}).get());
    c.CustomAggregateFunctions()->Add(Id(u"mode").get());

    auto* orders = static_cast<TmvMetadataTable*>(c.AddObject(Id(u"dbo").get(), Id(u"Orders", true).get(),
                                                              TmvMetadataTable::StaticClass(), false,
                                                              Name({u"srv", u"db"}).get()));
    orders->SetAltName(u"All orders");
    orders->SetAltNameCaseSensitive(true);
    orders->SetShortDescription(u"Orders of customers");
    orders->SetLongDescription(u"Line one\r\nline two\n\ttabbed  ");
    TmvMetadataField* id = AddField(orders, u"id", ftInteger, 4, false);
    id->SetPrimaryKey(true);
    id->SetFieldTypeName(u"INTEGER");
    TmvMetadataField* amount = AddField(orders, u"amount", ftBCD);
    amount->SetFieldTypeName(u"NUMERIC");
    amount->SetPrecision(10);
    amount->SetScale(2);
    amount->SetReadOnly(true);
    amount->SetAltName(u"Amount due");
    amount->SetShortDescription(u"net");
    amount->SetLongDescription(u"net of tax");
    TmvMetadataField* total = AddField(orders, u"total", ftUnknown);
    total->SetExpression(u"amount * 2");
    orders->GetFields()->AddField(Name({u"Mixed Case"}, true).get(), ftWideString, 30);
    TmvMetadataRelation* fk = AddRelation(orders, u"customer_id", {u"db", u"dbo", u"customers"}, u"id", true);
    fk->SetKeyCardinality(mrcMany);
    fk->SetChildCardinality(mrcOne);
    AddRelation(orders, u"id", {u"lines"}, u"order_id", false);

    TmvMetadataTable* customers = c.AddTable(Name({u"db", u"dbo", u"customers"}).get(), true);
    AddField(customers, u"id", ftLargeint);
    customers->SetVisible(false);
    // Loaded, without fields: written as an empty list.
    c.AddTable(Name({u"empty_loaded"}).get())->GetFields()->SetLoaded(true);
    // Never loaded: no list in the file.
    c.AddTable(Name({u"not_loaded"}).get());

    TmvMetadataView* recent = c.AddView(Name({u"sales", u"recent"}).get());
    recent->SetExpression(u"(SELECT id FROM Orders) o");
    recent->SetDBLink(Name({u"remote", u"link"}).get());
    AddField(recent, u"id", ftInteger);

    TmvMetadataProcedure* proc = c.AddProcedure(Name({u"dbo", u"refresh"}).get());
    AddField(proc, u"rows_done", ftInteger);
    proc->Parameters()->Add()->SetName(Id(u"since").get());

    // A synonym of a table in the container writes the table's lists;
    // one whose target is elsewhere writes its own.
    TmvOwned<TSQLQualifiedName> target = Name({u"srv", u"db", u"dbo"});
    target->AddName(u"Orders", true);
    c.AddSynonym(Name({u"o"}).get(), target.get());
    TmvMetadataSynonym* remote = c.AddSynonym(Name({u"r"}).get(), Name({u"other", u"x", u"t"}).get());
    AddField(remote, u"c", ftString, 10);
  }
};

}  // namespace

TEST_F(MetadataXmlTest, ReadingWhatWasWrittenGivesTheSameContainer) {
  FillEverything(*container);
  const std::string written = Xml(*container);
  TmvOwned<TmvMetadataContainer> copy = NewContainer();
  copy->LoadFromXML(UTF8Decode(written));
  // By design a loaded list without fields comes back unloaded, to be
  // fetched on demand; nothing else differs.
  container->Items(2)->GetFields()->SetLoaded(false);
  EXPECT_EQ(Xml(*copy), Xml(*container));
  EXPECT_NE(written.find("<fields />"), std::string::npos);
  ASSERT_EQ(copy->Count(), container->Count());

  for (int i = 0; i < container->Count(); ++i) {
    SCOPED_TRACE(i);
    TmvMetadataObject* a = container->Items(i);
    TmvMetadataObject* b = copy->Items(i);
    EXPECT_EQ(&a->MetadataClass(), &b->MetadataClass());
    EXPECT_TRUE(context.IsQualifiedNamesEqual(a->FullName(), b->FullName()));
    EXPECT_EQ(a->Name()->Quoted, b->Name()->Quoted);
    EXPECT_EQ(a->System(), b->System());
    EXPECT_EQ(a->Visible(), b->Visible());
    EXPECT_EQ(b->GetFields()->Loaded(), a->GetFields()->Loaded());
    EXPECT_EQ(b->GetFields()->Count(), a->GetFields()->Count());
  }
  // Names resolve through the index at once, defaults included.
  TmvMetadataTable* orders = copy->FindTableByFullName(u"\"Orders\"");
  ASSERT_NE(orders, nullptr);
  EXPECT_EQ(copy->FindTableByAltName(u"All orders", true), orders);
  EXPECT_EQ(copy->DefaultSchemaNamesStr(), u"dbo;\"Sales\"");
  EXPECT_EQ(copy->CustomAggregateFunctions()->Count(), 2);
  EXPECT_EQ(orders->LongDescription(), u"Line one\r\nline two\n\ttabbed  ");

  const TmvMetadataFieldsList* fields = orders->GetFields();
  ASSERT_EQ(fields->Count(), 4);
  EXPECT_EQ(fields->Items(0)->FieldType(), ftInteger);
  EXPECT_TRUE(fields->Items(0)->PrimaryKey());
  EXPECT_FALSE(fields->Items(0)->Nullable());
  EXPECT_EQ(fields->Items(1)->Precision(), 10);
  EXPECT_EQ(fields->Items(1)->Scale(), 2);
  EXPECT_TRUE(fields->Items(1)->ReadOnly());
  EXPECT_TRUE(fields->Items(2)->IsVirtualCalculatedField());
  EXPECT_TRUE(TmvCast<TastTokenIdentifier>(fields->Items(3)->Name()->Token(0))->Quoted);

  const TmvMetadataRelationsList* relations = orders->GetRelations();
  ASSERT_EQ(relations->Count(), 2);
  EXPECT_TRUE(relations->Items(0)->ForeignKey());
  EXPECT_EQ(relations->Items(0)->KeyCardinality(), mrcMany);
  EXPECT_EQ(relations->Items(0)->ChildCardinality(), mrcOne);
  EXPECT_EQ(relations->Items(0)->GetChildMetadataObject(), copy->FindTableByName(u"customers", u"dbo", u"db"));
  EXPECT_FALSE(relations->Items(1)->ForeignKey());

  EXPECT_TRUE(copy->Items(4)->IsVirtualCalculatedObject());
  EXPECT_EQ(copy->Items(4)->DBLinkStr(), container->Items(4)->DBLinkStr());
  // Parameters are fetched again, never read from the file.
  EXPECT_EQ(static_cast<TmvMetadataProcedure*>(copy->Items(5))->Parameters()->Count(), 0);
  auto* synonym = static_cast<TmvMetadataSynonym*>(copy->Items(6));
  EXPECT_EQ(synonym->GetReferencedObject(), orders);
  EXPECT_EQ(synonym->GetFields(), orders->GetFields());
}

TEST_F(MetadataXmlTest, WrittenFormMatchesTheGoldenFile) {
  container->SetDefaultDatabaseName(Name({u"db"}).get());
  container->DefaultSchemaNames()->AddIdentifier(u"dbo");
  container->CustomAggregateFunctions()->Add(Id(u"median").get());
  TmvMetadataTable* orders = container->AddTable(u"db.dbo.orders");
  TmvMetadataField* id = AddField(orders, u"id", ftInteger, 0, false);
  id->SetPrimaryKey(true);
  id->SetFieldTypeName(u"int4");
  AddField(orders, u"note", ftUnknown)->SetAltName(u"Note");
  AddRelation(orders, u"customer_id", {u"db", u"dbo", u"customers"}, u"id", true);
  TmvMetadataView* view = container->AddView(u"v");
  view->SetDBLink(Name({u"lnk"}).get());
  view->SetSystem(true);
  container->AddSynonym(u"s", u"dbo.orders");

  mvtest::TempFile saved("", ".xml");
  container->SaveToXMLFile(UTF8Decode(saved.path()));
  const std::string golden = mvtest::ReadFileBytes(DataFile("small.xml"));
  ASSERT_FALSE(golden.empty());
  EXPECT_EQ(mvtest::ReadFileBytes(saved.path()), golden);

  TmvOwned<TmvMetadataContainer> copy = NewContainer();
  copy->LoadFromXMLFile(UTF8Decode(DataFile("small.xml")));
  EXPECT_EQ(Xml(*copy), Xml(*container));
}

TEST_F(MetadataXmlTest, HostileNamesSurviveUnchanged) {
  const WideString names[] = {
      u"quote\"double", u"quote'single", u"[bracketed]", u"semi;colon", u"line\nfeed", u"carriage\r\nreturn",
      u"tab\there",     u"<&amp;>",      u"emoji \U0001F600 and \U00010348", u"  blanks  ", u"dot.ted",
  };
  for (const WideString& text : names) {
    TmvMetadataTable* table = container->AddTable(Id(text).get(), Id(text, true).get());
    table->GetFields()->AddField(Name({text.c_str()}, true).get(), ftString);
    table->SetAltName(text);
  }
  TmvOwned<TmvMetadataContainer> copy = NewContainer();
  copy->LoadFromXML(container->GetXML());
  ASSERT_EQ(copy->Count(), int(std::size(names)));
  for (const WideString& text : names) {
    SCOPED_TRACE(UTF8Encode(text));
    TmvMetadataTable* table = copy->FindTableByName(Id(text, true).get(), Id(text).get());
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->Name()->Token, text);
    EXPECT_TRUE(table->Name()->Quoted);
    EXPECT_EQ(table->Schema()->Token, text);
    EXPECT_FALSE(table->Schema()->Quoted);
    EXPECT_EQ(table->AltName(), text);
    EXPECT_EQ(table->GetFields()->Items(0)->Name()->Token(0)->Token, text);
  }
  EXPECT_EQ(copy->GetXML(), container->GetXML());
}

namespace {

struct RefusedCase {
  const char* name;
  std::string xml;
  const char* elementPath;  // empty: none
  int line;
  const char* reason;  // a part of the message
};

const std::string kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<metadata>\n";
const std::string kTable = "  <table>\n    <name name=\"t\" case_sens=\"0\"/>\n  </table>\n";

const RefusedCase kRefused[] = {
    {"Malformed", kHead + kTable + "  <view>\n    <name name=\"v\"/>\n  </vew>\n</metadata>\n",
     "metadata/view/name", 8, "Error parsing XML: Start-end tags mismatch"},
    {"Truncated", kHead + kTable + "  <view>\n    <name name=\"v\" ca", "metadata/view/name", 7, "Error parsing XML: "},
    {"Empty", "", "", 1, "Error parsing XML: No document element found"},
    {"WrongRoot", "<?xml version=\"1.0\"?>\n<properties>\n" + kTable + "</properties>\n", "properties", 2,
     "Bad XML file: tag \"metadata\" not found."},
    {"UnknownTypeOrdinal",
     kHead + "  <table>\n    <name name=\"t\"/>\n    <fields>\n      <field><type platform=\"native\">35</type></field>\n"
             "      <field><type platform=\"native\">99</type></field>\n    </fields>\n  </table>\n</metadata>\n",
     "metadata/table/fields/field[2]/type", 7, "Unknown field type \"99\""},
    {"DuplicateObject", kHead + kTable + "  <view><name name=\"t\"/></view>\n" + kTable + "</metadata>\n",
     "metadata/table[2]", 7, "Duplicate table \"t\""},
    {"BadExpression", kHead + "  <view>\n    <name name=\"v\"/>\n    <expression>FROM (</expression>\n  </view>\n</metadata>\n",
     "metadata/view/expression", 5, ""},
};

class RefusedDocumentTest : public MetadataXmlTest, public ::testing::WithParamInterface<RefusedCase> {};

}  // namespace

TEST_P(RefusedDocumentTest, SaysWhereAndChangesNothing) {
  const RefusedCase& c = GetParam();
  container->AddTable(u"kept")->GetFields()->AddField(u"k");
  container->SetDefaultSchemaNamesStr(u"dbo");
  const std::string before = Xml(*container);
  mvtest::TempFile file(c.xml, ".xml");

  for (bool fromFile : {true, false}) {
    SCOPED_TRACE(fromFile ? "file" : "text");
    for (bool replace : {true, false}) {
      std::optional<EmvMetadataXMLError> error = mvtest::Thrown<EmvMetadataXMLError>([&] {
        const WideString path = UTF8Decode(file.path());
        if (fromFile)
          replace ? container->LoadFromXMLFile(path) : container->AddFromXMLFile(path);
        else
          replace ? container->LoadFromXML(UTF8Decode(c.xml)) : container->AddFromXML(UTF8Decode(c.xml));
      });
      ASSERT_TRUE(error);
      const std::string message = UTF8Encode(error->Message());
      EXPECT_NE(message.find(c.reason), std::string::npos) << message;
      EXPECT_EQ(UTF8Encode(error->ElementPath()), c.elementPath) << message;
      EXPECT_EQ(error->Line(), c.line) << message;
      if (*c.elementPath) {
        EXPECT_NE(message.find(std::string("<") + c.elementPath + ">"), std::string::npos) << message;
      }
      EXPECT_NE(message.find("line " + std::to_string(c.line)), std::string::npos) << message;
      if (fromFile) {
        EXPECT_EQ(error->FileName(), UTF8Decode(file.path()));
        EXPECT_EQ(message.rfind("File \"" + file.path() + "\", ", 0), 0u) << message;
      } else {
        EXPECT_EQ(message.rfind("XML text, ", 0), 0u) << message;
      }
      EXPECT_EQ(Xml(*container), before);
      EXPECT_EQ(container->GetUpdateCount(), 0);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(MetadataXml, RefusedDocumentTest, ::testing::ValuesIn(kRefused),
                         [](const ::testing::TestParamInfo<RefusedCase>& info) { return info.param.name; });

TEST_F(MetadataXmlTest, AUtf16FileIsReadAndItsLinesCounted) {
  // UTF-16 LE with its byte order mark.
  auto utf16 = [](std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    for (char16_t unit : text) {
      bytes += char(unit & 0xFF);
      bytes += char(unit >> 8);
    }
    return bytes;
  };
  const std::u16string table = u"<metadata>\n<table><name name=\"\u00E9t\u00E9\"/></table>\n";
  mvtest::TempFile refused(utf16(table + u"<view><fields><field><type>99</type></field></fields></view>\n</metadata>"),
                           ".xml");
  std::optional<EmvMetadataXMLError> error =
      mvtest::Thrown<EmvMetadataXMLError>([&] { container->LoadFromXMLFile(UTF8Decode(refused.path())); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->Line(), 3);
  EXPECT_EQ(error->ElementPath(), u"metadata/view/fields/field/type");
  mvtest::TempFile good(utf16(table + u"</metadata>"), ".xml");
  container->LoadFromXMLFile(UTF8Decode(good.path()));
  EXPECT_NE(container->FindTableByName(Id(u"\u00E9t\u00E9").get()), nullptr);
}

TEST_F(MetadataXmlTest, AMissingFileIsNamed) {
  const WideString message = mvtest::ThrownMessage([&] { container->LoadFromXMLFile(u"/nonexistent/m.xml"); });
  EXPECT_NE(message.find(u"/nonexistent/m.xml"), WideString::npos);
  EXPECT_NE(mvtest::ThrownMessage([&] { container->SaveToXMLFile(u"/nonexistent/m.xml"); }).find(u"/nonexistent"),
            WideString::npos);
}

TEST_F(MetadataXmlTest, ReadsOlderAndForeignSpellings) {
  container->LoadFromXML(uR"(<metadata>
  <!-- a comment, and elements this reader does not know -->
  <generator>someone else</generator>
  <default_schemas><item name="a" case_sens="TRUE"/><other/><item name="b" case_sens="false"/></default_schemas>
  <table>
    <unknown><name name="not me"/></unknown>
    <dblink name="old" case_sens="-1"/>
    <name name="t1" case_sens="True"/>
    <system>true</system>
    <visible>FALSE</visible>
    <fields/>
  </table>
  <table>
    <dblink><item name="old" case_sens="1"/></dblink>
    <name name="t2"/>
    <fields>
      <field><name><item name="a"/></name><type platform="NET">int64</type><nullable>1</nullable></field>
      <field><name><item name="b"/></name><type platform="java">-9</type><nullable>false</nullable></field>
      <field><name><item name="c"/></name><type platform="java">93</type><primary_key>yes</primary_key></field>
      <field><name><item name="d"/></name><type>16</type><size> 12 </size><precision>x</precision></field>
      <field><name><item name="e"/></name><type>Guid</type></field>
      <field><name><item name="f"/></name><type platform="native"></type></field>
      <field><name><item name="g"/></name><type platform="other">OBJECT</type></field>
      <field><name><item name="h"/></name><type platform="net">VARCHAR2</type><type_name>VARCHAR2</type_name></field>
      <field><name><item name="i"/></name><type platform="native">text</type></field>
    </fields>
    <relations>
      <relation type="fk"><key_fields><field_name><item name="a"/></field_name></key_fields>
        <key_cardinality></key_cardinality><child_name name="t1"/><child_cardinality> 1 </child_cardinality></relation>
      <relation type="other"><child_name name="t1"/><key_cardinality>?</key_cardinality></relation>
    </relations>
  </table>
  <view/>
  <item>not an object</item>
</metadata>)");
  ASSERT_EQ(container->Count(), 3);
  EXPECT_EQ(container->DefaultSchemaNamesStr(), u"\"a\";b");
  TmvMetadataObject* t1 = container->Items(0);
  TmvMetadataObject* t2 = container->Items(1);
  // The two forms of the link give the same link.
  EXPECT_TRUE(context.IsQualifiedNamesEqual(t1->DBLink(), t2->DBLink()));
  EXPECT_TRUE(t1->Name()->Quoted);
  EXPECT_TRUE(t1->System());
  EXPECT_FALSE(t1->Visible());
  // An empty list is not loaded: the fields are fetched when needed.
  EXPECT_FALSE(t1->GetFields()->Loaded());
  EXPECT_TRUE(t2->GetFields()->Loaded());

  const TmvMetadataFieldsList* fields = t2->GetFields();
  // Type names the reader does not know are unknown types; the server's
  // spelling stays in type_name.
  ASSERT_EQ(fields->Count(), 9);
  const TFieldType types[] = {ftLargeint, ftWideString, ftUnknown, ftMemo, ftGuid,
                              ftUnknown,  ftUnknown,    ftUnknown, ftUnknown};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(fields->Items(i)->FieldType(), types[i]) << i;
  EXPECT_EQ(fields->Items(7)->FieldTypeName(), u"VARCHAR2");
  EXPECT_TRUE(fields->Items(0)->Nullable());
  EXPECT_FALSE(fields->Items(1)->Nullable());
  EXPECT_TRUE(fields->Items(2)->PrimaryKey());
  EXPECT_EQ(fields->Items(3)->Size(), 12);
  EXPECT_EQ(fields->Items(3)->Precision(), 0);

  const TmvMetadataRelationsList* relations = t2->GetRelations();
  ASSERT_EQ(relations->Count(), 2);
  EXPECT_TRUE(relations->Items(0)->ForeignKey());
  EXPECT_EQ(relations->Items(0)->KeyCardinality(), mrcOne);  // no text: the default
  EXPECT_EQ(relations->Items(0)->ChildCardinality(), mrcOne);
  EXPECT_EQ(relations->Items(0)->ChildNameStrNotQuoted(), u"t1");
  EXPECT_EQ(relations->Items(0)->KeyFields()->Count(), 1);
  EXPECT_FALSE(relations->Items(1)->ForeignKey());
  EXPECT_EQ(relations->Items(1)->KeyCardinality(), mrcUnknown);
  // A view without a name enters with an empty one.
  EXPECT_TRUE(container->Items(2)->Name()->IsEmpty());
}

TEST_F(MetadataXmlTest, AddingTwiceGivesDuplicatesAndLoadingReplaces) {
  const WideString text = u"<metadata><default_schemas><item name=\"s\"/></default_schemas>"
                          u"<table><name name=\"t\"/></table></metadata>";
  container->CustomAggregateFunctions()->Add(Id(u"median").get());
  container->AddFromXML(text);
  container->AddFromXML(text);
  EXPECT_EQ(container->Count(), 2);
  container->LoadFromXML(u"<metadata><view><name name=\"v\"/></view></metadata>");
  ASSERT_EQ(container->Count(), 1);
  EXPECT_NE(container->FindViewByName(u"v"), nullptr);
  // Clear dropped the schemas; the custom aggregates stay unless the file has its own.
  EXPECT_EQ(container->DefaultSchemaNames()->GetCount(), 0);
  EXPECT_EQ(container->CustomAggregateFunctions()->Count(), 1);
  EXPECT_TRUE(container->Loaded());
}

TEST_F(MetadataXmlTest, ParametersAndUnknownTypesAsWritten) {
  TmvMetadataProcedure* proc = container->AddProcedure(u"p");
  TmvMetadataParameter* bare = proc->Parameters()->Add();
  TmvMetadataParameter* full = proc->Parameters()->Add();
  full->SetName(Id(u"since", true).get());
  full->SetFieldType(ftDate);
  full->SetSize(8);
  full->SetParamType(ptInputOutput);
  full->SetAltName(u"Since");
  pugi::xml_document document;
  proc->Parameters()->GetXMLNode(document, "params");
  std::ostringstream out;
  document.save(out, "", pugi::format_raw | pugi::format_no_declaration);
  EXPECT_EQ(out.str(),
            "<params><parameters/><parameters><name name=\"since\" case_sens=\"1\"/><alt_name>Since</alt_name>"
            "<type>9</type><size>8</size><param_type>3</param_type></parameters></params>");

  TmvOwned<TmvMetadataProcedure> copy = TmvCreate<TmvMetadataProcedure>(nullptr, &context);
  copy->Parameters()->LoadFromXMLNode(document.first_child());
  ASSERT_EQ(copy->Parameters()->Count(), 2);
  EXPECT_EQ(copy->Parameters()->Items(1)->ParamType(), ptInputOutput);
  EXPECT_EQ(copy->Parameters()->Items(1)->FieldType(), ftDate);
  EXPECT_TRUE(copy->Parameters()->Items(1)->Name()->Quoted);
  (void)bare;
}

TEST(MetadataXmlHelpersTest, ValuesChildrenAndPaths) {
  pugi::xml_document document;
  ASSERT_TRUE(document.load_string(
      "<r><a k=\"1\">x</a><a k=\"2\"><b/><b>0</b></a><c> FALSE </c><d>no</d><e>-1</e><f/></r>"));
  pugi::xml_node root = document.first_child();
  pugi::xml_node second = FindChildByNameAndAttribute("a", "k", "2", root);
  ASSERT_TRUE(second);
  EXPECT_FALSE(FindChildByNameAndAttribute("a", "k", "3", root));
  EXPECT_EQ(GetValueFromChildNode(root, "a"), TmvVariant(u"x"));
  EXPECT_TRUE(GetValueFromChildNode(root, "f").IsEmpty());
  EXPECT_TRUE(GetValueFromChildNode(root, "none").IsEmpty());
  // Booleans: false only for 0 and false, in any case and with blanks around.
  EXPECT_FALSE(XMLNodeBool(FindChildElByName("c", root)));
  EXPECT_TRUE(XMLNodeBool(FindChildElByName("d", root)));
  EXPECT_TRUE(XMLNodeBool(FindChildElByName("e", root)));
  EXPECT_FALSE(XMLNodeBool(second.last_child()));
  EXPECT_EQ(XMLNodeInt(FindChildElByName("e", root), 7), -1);
  EXPECT_EQ(XMLNodeInt(FindChildElByName("d", root), 7), 7);
  EXPECT_EQ(XMLElementPath(second.last_child()), u"r/a[2]/b[2]");
  EXPECT_EQ(XMLElementPath(FindChildElByName("c", root)), u"r/c");
  EXPECT_EQ(XMLLineOfOffset("a\nb\nc", 4), 3);
  pugi::xml_node written = CreateNodeWithValueParent(root, "g", true);
  EXPECT_STREQ(written.text().get(), "1");
  EXPECT_STREQ(CreateNodeWithValueParent(root, "h", 42).text().get(), "42");
}
