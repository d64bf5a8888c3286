#include "support/Collection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "Thrown.h"
#include "support/Exceptions.h"
#include "support/UpdatableCollection.h"
#include "support/UpdatablePersistent.h"

using namespace mv;

namespace {

std::vector<std::string> gLog;

class Column : public TmvCollectionItem {
  MV_DECLARE_CLASS()
 public:
  using TmvCollectionItem::TmvCollectionItem;
  ~Column() override { gLog.push_back("free:" + name); }
  void Assign(const TmvPersistent* source) override {
    if (auto* other = TmvCast<Column>(source)) {
      name = other->name;
      return;
    }
    TmvCollectionItem::Assign(source);
  }
  void Rename(std::string n) {
    name = std::move(n);
    Changed(false);
  }
  std::string name;
};
MV_DEFINE_CLASS(Column, TmvCollectionItem)

// Records what the collection is told.
class Columns : public TmvCollection {
 public:
  using TmvCollection::TmvCollection;
  std::vector<std::string> told;
  std::vector<std::string>* mirror = nullptr;  // also records here, to outlive the collection

 protected:
  void Update(TmvCollectionItem* item) override {
    Tell(item ? "update:" + static_cast<Column*>(item)->name : "update:all");
  }
  void Notify(TmvCollectionItem* item, TmvCollectionNotification action) override {
    static const char* kNames[] = {"added", "extracting", "deleting"};
    Tell(std::string(kNames[static_cast<int>(action)]) + ":" + static_cast<Column*>(item)->name);
  }

 private:
  void Tell(const std::string& what) {
    told.push_back(what);
    if (mirror) mirror->push_back(what);
  }
};

Column* AddColumn(TmvCollection& c, std::string name) {
  auto* column = static_cast<Column*>(c.Add());
  column->name = std::move(name);
  return column;
}

std::vector<std::string> Names(const TmvCollection& c) {
  std::vector<std::string> out;
  for (int i = 0; i < c.Count(); ++i) out.push_back(static_cast<Column*>(c.GetItem(i))->name);
  return out;
}

using Strings = std::vector<std::string>;

}  // namespace

TEST(Collection, MakesOwnsAndFreesItsItems) {
  gLog.clear();
  {
    Columns columns(nullptr, CollectionItemClassOf<Column>());
    AddColumn(columns, "a");
    AddColumn(columns, "b");
    auto* c = static_cast<Column*>(columns.Insert(1));
    c->name = "c";
    EXPECT_EQ(Names(columns), (Strings{"a", "c", "b"}));
    EXPECT_EQ(c->GetCollection(), &columns);
    EXPECT_EQ(c->GetOwner(), &columns);
    EXPECT_EQ(c->GetIndex(), 1);
    EXPECT_EQ(c->GetID(), 2);
    EXPECT_EQ(columns.FindItemID(2), c);
    EXPECT_EQ(columns.FindItemID(7), nullptr);
    EXPECT_EQ(c->GetDisplayName(), u"Column");
    EXPECT_EQ(columns.GetItemClass().ClassName(), "Column");
  }
  // The collection frees its items (quietly, as it was not freed in two phases).
  EXPECT_EQ(gLog, (Strings{"free:a", "free:c", "free:b"}));
}

TEST(Collection, ListChangesTellTheCollectionInOrder) {
  // Each change on a collection of a, b, c: what Notify and Update hear,
  // what is freed, and the names left.
  const struct {
    const char* change;
    std::function<void(Columns&)> apply;
    Strings told, freed, left;
  } cases[] = {
      {"Add", [](Columns& c) { c.Add(); }, {"added:", "update:all"}, {}, {"a", "b", "c", ""}},
      {"Delete", [](Columns& c) { c.Delete(0); }, {"deleting:a", "extracting:a", "update:all"}, {"free:a"}, {"b", "c"}},
      // An item freed directly leaves its collection.
      {"Free", [](Columns& c) { c.GetItem(1)->Free(); }, {"extracting:b", "update:all"}, {"free:b"}, {"a", "c"}},
      // Clear frees the last first, inside one update.
      {"Clear", [](Columns& c) { c.Clear(); }, {"extracting:c", "extracting:b", "extracting:a", "update:all"},
       {"free:c", "free:b", "free:a"}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.change);
    Columns columns(nullptr, CollectionItemClassOf<Column>());
    for (const char* name : {"a", "b", "c"}) AddColumn(columns, name);
    columns.told.clear();
    gLog.clear();
    c.apply(columns);
    EXPECT_EQ(columns.told, c.told);
    EXPECT_EQ(gLog, c.freed);
    EXPECT_EQ(Names(columns), c.left);
  }
}

TEST(Collection, ItemChangesAreHeldBackInABatch) {
  Columns columns(nullptr, CollectionItemClassOf<Column>());
  Column* a = AddColumn(columns, "a");
  columns.told.clear();
  a->Rename("x");
  EXPECT_EQ(columns.told, Strings{"update:x"});
  columns.BeginUpdate();
  a->Rename("y");
  AddColumn(columns, "z");
  EXPECT_EQ(columns.GetCollectionUpdateCount(), 1);
  columns.EndUpdate();
  EXPECT_EQ(columns.told, (Strings{"update:x", "added:", "update:all"}));
}

TEST(Collection, SetIndexMovesTheItemAndBadIndexesRaiseListErrors) {
  Columns columns(nullptr, CollectionItemClassOf<Column>());
  AddColumn(columns, "a");
  AddColumn(columns, "b");
  Column* c = AddColumn(columns, "c");
  c->SetIndex(0);
  EXPECT_EQ(Names(columns), (Strings{"c", "a", "b"}));
  EXPECT_THROW(c->SetIndex(3), EListError);
  EXPECT_EQ(Names(columns), (Strings{"c", "a", "b"}));
  EXPECT_THROW(columns.GetItem(-1), EListError);
  EXPECT_THROW(columns.Insert(4), EListError);
  EXPECT_THROW(columns.Delete(5), EListError);
  EXPECT_EQ(mvtest::ThrownMessage<EListError>([&] { columns.GetItem(3); }),
            u"List index out of bounds (3); the list holds 3 entries");
}

TEST(Collection, AssignCopiesTheItems) {
  Columns source(nullptr, CollectionItemClassOf<Column>());
  AddColumn(source, "a");
  AddColumn(source, "b");
  Columns target(nullptr, CollectionItemClassOf<Column>());
  AddColumn(target, "old");
  target.told.clear();
  target.Assign(&source);
  EXPECT_EQ(Names(target), (Strings{"a", "b"}));
  EXPECT_EQ(target.told.back(), "update:all");
  EXPECT_EQ(std::count(target.told.begin(), target.told.end(), "update:all"), 1);
}

TEST(Collection, TwoPhaseFreeOfTheCollectionNotifiesWhileWhole) {
  Strings told;
  auto columns = TmvCreate<Columns>(nullptr, CollectionItemClassOf<Column>());
  AddColumn(*columns, "a");
  columns->mirror = &told;
  columns.reset();
  // The collection's own Notify and Update still ran: it was whole.
  EXPECT_EQ(told, (Strings{"extracting:a", "update:all"}));
}

// --- Updatable collections ---

namespace {

class Field : public TmvUpdatableCollectionItem {
  MV_DECLARE_CLASS()
 public:
  using TmvUpdatableCollectionItem::TmvUpdatableCollectionItem;
  void SetSize(int s) {
    if (s != size) {
      size = s;
      NotifyUpdated();
    }
  }
  int size = 0;
};
MV_DEFINE_CLASS(Field, TmvUpdatableCollectionItem)

class Table : public TmvUpdatablePersistent {
 public:
  int updated = 0;
  std::vector<TmvObject*> seen;

 protected:
  void DoUpdated() override {
    ++updated;
    seen = GetUpdatedChildren();
    TmvUpdatablePersistent::DoUpdated();
  }
};

}  // namespace

TEST(UpdatableCollection, ItemChangeReachesTheCollectionAndItsParent) {
  Table table;
  TmvUpdatableCollection fields(&table, CollectionItemClassOf<Field>(), &table);
  EXPECT_EQ(fields.GetOwner(), &table);
  EXPECT_EQ(fields.GetParent(), &table);
  auto* field = static_cast<Field*>(fields.Add());
  EXPECT_EQ(field->GetParent(), static_cast<ImvBatchUpdatable*>(&fields));
  std::vector<TmvObject*> collectionSaw;
  fields.GetOnUpdated().AddHandler(TmvHandlerId::Unique(),
                                   [&](TmvObject*) { collectionSaw = fields.GetUpdatedChildren(); });
  field->SetSize(10);
  EXPECT_EQ(collectionSaw, std::vector<TmvObject*>{field});
  EXPECT_EQ(table.updated, 1);
  EXPECT_EQ(table.seen, std::vector<TmvObject*>{field});
}

TEST(UpdatableCollection, BatchOnTheCollectionCoversBothKindsOfUpdate) {
  Table table;
  TmvUpdatableCollection fields(&table, CollectionItemClassOf<Field>(), &table);
  std::vector<std::string> log;
  fields.GetOnBeginUpdate().AddHandler(TmvHandlerId::Unique(), [&](TmvObject*) {
    log.push_back("begin:" + std::to_string(fields.GetCollectionUpdateCount()));
  });
  fields.GetOnEndUpdate().AddHandler(TmvHandlerId::Unique(), [&](TmvObject*) {
    log.push_back("end:" + std::to_string(fields.GetCollectionUpdateCount()));
  });
  fields.BeginUpdate();
  EXPECT_EQ(fields.GetCollectionUpdateCount(), 1);
  EXPECT_EQ(fields.GetUpdateCount(), 1);
  auto* a = static_cast<Field*>(fields.Add());
  auto* b = static_cast<Field*>(fields.Add());
  a->SetSize(1);
  b->SetSize(2);
  a->SetSize(3);
  fields.EndUpdate();
  // The notification batch opens before the collection's own and closes after it.
  EXPECT_EQ(log, (std::vector<std::string>{"begin:0", "end:0"}));
  EXPECT_EQ(table.updated, 1);
  EXPECT_EQ(table.seen, (std::vector<TmvObject*>{a, b, a}));
}

TEST(UpdatableCollection, ItemOfAPlainCollectionHasNoParent) {
  TmvCollection plain(nullptr, CollectionItemClassOf<Field>());
  auto* field = static_cast<Field*>(plain.Add());
  EXPECT_EQ(field->GetParent(), nullptr);
  field->SetSize(4);  // notifies nobody, and does not fail
  EXPECT_EQ(field->size, 4);
}
