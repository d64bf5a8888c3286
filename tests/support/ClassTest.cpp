#include "support/Class.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace mv;

namespace {

std::vector<std::string> gEvents;

class TestBase : public TmvObject {
  MV_DECLARE_CLASS()
 public:
  explicit TestBase(int tag) : tag(tag) { gEvents.push_back("construct"); }
  ~TestBase() override { gEvents.push_back("destruct"); }
  void AfterConstruction() override { gEvents.push_back("after:" + std::string(ClassName())); }
  void BeforeDestruction() override { gEvents.push_back("before:" + std::string(ClassName())); }
  int tag;
};
MV_DEFINE_CLASS(TestBase, TmvObject)

class TestDerived : public TestBase {
  MV_DECLARE_CLASS()
 public:
  using TestBase::TestBase;
};
MV_DEFINE_CLASS(TestDerived, TestBase)

using TestClass = TmvClassOf<TestBase, int>;
const TestClass kDerivedClass("TestDerived", &TestBase::StaticClass(),
                              [](int tag) -> TestBase* { return new TestDerived(tag); });

}  // namespace

TEST(ClassFacility, NamesAndInheritance) {
  TestDerived d(1);
  EXPECT_EQ(d.ClassName(), "TestDerived");
  EXPECT_TRUE(d.InheritsFrom(TestBase::StaticClass()));
  EXPECT_TRUE(d.InheritsFrom(TmvObject::StaticClass()));
  EXPECT_FALSE(TestBase::StaticClass().InheritsFrom(TestDerived::StaticClass()));
  EXPECT_EQ(TmvCast<TestDerived>(static_cast<TmvObject*>(&d)), &d);
  TestBase b(2);
  EXPECT_EQ(TmvCast<TestDerived>(static_cast<TmvObject*>(&b)), nullptr);
  EXPECT_TRUE(SameClassName("tmvobject", "TmvObject"));
}

TEST(ClassFacility, TwoPhaseConstructionAndDestruction) {
  gEvents.clear();
  {
    auto object = TmvCreate<TestDerived>(5);
    EXPECT_EQ(object->tag, 5);
  }
  // The virtual phases see the most-derived class on both ends.
  EXPECT_EQ(gEvents, (std::vector<std::string>{"construct", "after:TestDerived", "before:TestDerived",
                                                "destruct"}));
}

TEST(ClassFacility, FactoryCreatesThroughClassValue) {
  gEvents.clear();
  TmvOwned<TestBase> object(kDerivedClass.CreateRaw(9));
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->tag, 9);
  EXPECT_EQ(object->ClassName(), "TestDerived");
  EXPECT_EQ(gEvents.at(1), "after:TestDerived");
  const TestClass abstractClass("Abstract", &TestBase::StaticClass(), nullptr);
  EXPECT_TRUE(abstractClass.IsAbstract());
  EXPECT_EQ(abstractClass.CreateRaw(1), nullptr);
}
