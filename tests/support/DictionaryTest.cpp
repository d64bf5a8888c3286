#include "support/Dictionary.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Thrown.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

std::vector<std::string> gFreed;

class Thing : public TmvObject {
 public:
  explicit Thing(std::string name) : name(std::move(name)) {}
  void BeforeDestruction() override { gFreed.push_back("before:" + name); }
  ~Thing() override { gFreed.push_back(name); }
  std::string name;
};

Thing* Make(const char* name) { return new Thing(name); }

}  // namespace

TEST(Dictionary, KeysCompareByIdentityInOrderOfAdding) {
  Thing k1("k"), k2("k"), v1("v1"), v2("v2");
  TmvDictionary d(false, false);
  d.Add(&k1, &v1);
  d.Add(&k2, &v2);
  EXPECT_EQ(d.Count(), 2);
  EXPECT_EQ(d.GetItem(&k1), &v1);
  EXPECT_EQ(d.GetItem(&k2), &v2);  // equal content, another object: another key
  EXPECT_EQ(d.KeysList(), (std::vector<TmvObject*>{&k1, &k2}));
  EXPECT_TRUE(d.ContainsKey(&k2));
  EXPECT_TRUE(d.ContainsValue(&v1));
  EXPECT_FALSE(d.ContainsValue(&k1));
  TmvObject* found = nullptr;
  EXPECT_TRUE(d.TryGet(&k1, found));
  EXPECT_EQ(found, &v1);
  Thing other("o");
  found = &other;
  EXPECT_FALSE(d.TryGet(&other, found));
  EXPECT_EQ(found, &other);  // untouched
}

TEST(Dictionary, AddDoesNotReplaceTheFirstPairStaysTheOneFound) {
  Thing k("k"), a("a"), b("b");
  TmvDictionary d(false, false);
  d.Add(&k, &a);
  d.Add(&k, &b);
  EXPECT_EQ(d.Count(), 2);
  EXPECT_EQ(d.GetItem(&k), &a);
  d.Remove(&k);
  EXPECT_EQ(d.GetItem(&k), &b);
}

TEST(Dictionary, MissingKeyRaisesAnIndexError) {
  Thing k("k"), v("v"), missing("m");
  TmvDictionary d(false, false);
  d.Add(&k, &v);
  EXPECT_THROW(d.Remove(&missing), EListError);
  EXPECT_THROW(d.GetItem(&missing), EListError);
  EXPECT_THROW(d.SetItem(&missing, &v), EListError);
  EXPECT_NE(mvtest::ThrownMessage<EListError>([&] { d.GetItem(nullptr); }).find(u"(-1)"), WideString::npos);
  EXPECT_EQ(d.Count(), 1);
}

TEST(Dictionary, OwningDictionaryFreesKeysAndValues) {
  gFreed.clear();
  {
    TmvDictionary d(true, true);
    d.Add(Make("k1"), Make("v1"));
    d.Add(Make("k2"), Make("v2"));
  }
  // Clear goes from the last pair to the first, in both destruction phases.
  EXPECT_EQ(gFreed, (std::vector<std::string>{"before:k2", "k2", "before:v2", "v2", "before:k1", "k1",
                                              "before:v1", "v1"}));
}

TEST(Dictionary, OwnsOnlyWhatItIsToldToAndSetItemFreesTheOldValue) {
  gFreed.clear();
  Thing key("key");
  {
    TmvDictionary d(false, true);
    d.Add(&key, Make("value"));
    d.Remove(&key);
    EXPECT_EQ(gFreed, (std::vector<std::string>{"before:value", "value"}));
    d.Add(&key, Make("old"));
    Thing* fresh = Make("new");
    d.SetItem(&key, fresh);
    EXPECT_EQ(gFreed.back(), "old");
    d.SetItem(&key, fresh);  // the same value again: nothing is freed
    EXPECT_EQ(gFreed.size(), 4u);
    EXPECT_EQ(d.GetItem(&key), fresh);
  }
  gFreed.clear();
  Thing value("value");
  {
    TmvDictionary d(true, false);
    d.Add(Make("key"), &value);
  }
  EXPECT_EQ(gFreed, (std::vector<std::string>{"before:key", "key"}));
}

TEST(Dictionary, ExtractPairFreesNothing) {
  gFreed.clear();
  TmvDictionary d(true, true);
  Thing* k = Make("k");
  Thing* v = Make("v");
  d.Add(k, v);
  TmvDictionary::Pair pair;
  EXPECT_TRUE(d.ExtractPair(k, pair));
  EXPECT_FALSE(d.ExtractPair(k, pair));
  EXPECT_EQ(pair.first, k);
  EXPECT_EQ(pair.second, v);
  EXPECT_EQ(d.Count(), 0);
  EXPECT_TRUE(gFreed.empty());
  TmvDeleter()(k);
  TmvDeleter()(v);
}

TEST(Dictionary, AnObjectHeldTwiceIsFreedOnce) {
  gFreed.clear();
  {
    TmvDictionary d(true, true);
    Thing* shared = Make("shared");
    d.Add(shared, shared);
    d.Add(shared, Make("v"));
    Thing* k = Make("k");
    d.Add(k, shared);
  }
  int sharedFrees = 0;
  for (const auto& f : gFreed) sharedFrees += f == "shared";
  EXPECT_EQ(sharedFrees, 1);
  EXPECT_EQ(gFreed.size(), 6u);  // three objects, two phases each
}
