// The model speaks to controls only through its interfaces and only when a
// control factory is set; and it acts on a batch of changes once.
#include <string>
#include <vector>

#include "ModelTestSupport.h"

namespace mvtest {
namespace {

using mv::TmvQueryBuilderControlOwner;

std::string Name(const TmvQueryBuilderControlOwner* owner) { return std::string(owner->ClassName()); }

// Every kind of control, recording what the model asks of it.
struct TRecord {
  std::vector<std::string> calls;
};

template <class Interface>
class TFake : public Interface {
 public:
  TFake(TRecord& record, std::string name) : record_(record), name_(std::move(name)) {}
  void UpdateControlVisualParams(TmvQueryBuilderControlOwner*) override { Call("update"); }

 protected:
  void Call(const std::string& what) { record_.calls.push_back(what + " " + name_); }
  TRecord& record_;
  std::string name_;
};

class TFakeBox : public TFake<mv::ImvDatasourceControl>, public mv::ImvStateSaver {
 public:
  using TFake::TFake;
  void SaveControlStateToOwner(TmvQueryBuilderControlOwner*) override { Call("save"); }
  void RestoreControlStateFromOwner(TmvQueryBuilderControlOwner*) override { Call("restore"); }
  void ReloadFieldsList() override { Call("reload"); }
  void UpdateChecksOnFields() override {}
  mv::WideString GetCaption() override { return {}; }
  void SetCaption(const mv::WideString&) override {}
  mv::TmvRect CalcFieldRect(const mv::WideString&) override { return {}; }
  void SetOptimalHeight() override {}
  void TuneSize() override {}
};

class TFakeTab : public TFake<mv::ImvSubQueryControl> {
 public:
  using TFake::TFake;
  mv::ImvControl* GetUnionNavBar() override { return nullptr; }
  void Activate() override {}
  void SetCaption(const mv::WideString& caption) override { Call("caption " + U8(caption)); }
};

class TFakeOperator : public TFake<mv::ImvUnionOperatorControl> {
 public:
  using TFake::TFake;
  void SetUnionOperator(const mv::WideString& text) override { Call("operator " + U8(text)); }
  void SetAll(bool) override {}
};

class TFakeOther : public TFake<mv::ImvControl> {
 public:
  using TFake::TFake;
};

class TFactory : public mv::ImvControlFactory {
 public:
  TRecord record;
  // The calls of making and freeing controls, without the captions set meanwhile.
  std::vector<std::string> LifeCalls() const {
    std::vector<std::string> calls;
    for (const std::string& call : record.calls)
      if (call.rfind("caption", 0) != 0) calls.push_back(call);
    return calls;
  }
  mv::ImvControl* CreateControl(TmvQueryBuilderControlOwner* owner, int index) override {
    const std::string name = Name(owner) + "#" + std::to_string(index);
    record.calls.push_back("create " + name);
    mv::ImvControl* control;
    if (mv::TmvCast<mv::TmvDatasource>(owner))
      control = new TFakeBox(record, name);
    else if (mv::TmvCast<mv::TmvSubQuery>(owner))
      control = new TFakeTab(record, name);
    else if (index == 2)
      control = new TFakeOperator(record, name);
    else
      control = new TFakeOther(record, name);
    controls.emplace_back(control);
    return control;
  }
  void ShowControl(mv::ImvControl*, bool visible) override { record.calls.push_back(visible ? "show" : "hide"); }
  void DestroyControl(mv::ImvControl* control) override {
    record.calls.push_back("destroy");
    std::erase_if(controls, [control](auto& owned) { return owned.get() == control; });
  }
  void AfterCreateControl(TmvQueryBuilderControlOwner*, mv::ImvControl*) override { record.calls.push_back("after"); }
  void BeforeDestroyControl(TmvQueryBuilderControlOwner*, mv::ImvControl*) override {
    record.calls.push_back("before-destroy");
  }
  std::vector<std::unique_ptr<mv::ImvControl>> controls;
};

TEST_F(ModelTest, HeadlessModelMakesNoControls) {
  Load("SELECT a FROM t UNION SELECT b FROM (SELECT b FROM u) q");
  host->CreateControls();  // no factory: nothing to make them with
  EXPECT_FALSE(host->HasControls());
  for (mv::TmvSubQuery* subQuery : host->SubQueries()) {
    EXPECT_FALSE(subQuery->HasControls());
    EXPECT_EQ(subQuery->GetControls(0), nullptr);
    for (mv::TmvUnionSubQuery* member : subQuery->UnionSubQueries()) EXPECT_FALSE(member->HasControls());
  }
}

TEST_F(ModelTest, ControlsAreMadeAndFreedInTheirOrder) {
  TFactory factory;
  host->SetControlFactory(&factory);
  host->CreateControls();
  factory.record.calls.clear();
  First()->AddObject(u"t", u"");
  EXPECT_EQ(factory.LifeCalls(),
            (std::vector<std::string>{"create TmvDataSourceObject#0", "restore TmvDataSourceObject#0",
                                      "update TmvDataSourceObject#0", "after", "show"}));
  factory.record.calls.clear();
  mv::TmvUnionSubQuery* added = Query()->Add();
  // The page of a SELECT shows only when it is the active one.
  const std::vector<std::string> member = {"create TmvUnionSubQuery#0", "update TmvUnionSubQuery#0", "after",
                                           "create TmvUnionSubQuery#1", "update TmvUnionSubQuery#1", "after", "show",
                                           "create TmvUnionSubQuery#2", "update TmvUnionSubQuery#2", "after", "show"};
  const std::vector<std::string> calls = factory.LifeCalls();
  ASSERT_GE(calls.size(), member.size());
  EXPECT_EQ(std::vector<std::string>(calls.begin(), calls.begin() + member.size()), member);
  EXPECT_TRUE(added->HasControls());
  factory.record.calls.clear();
  host->DestroyControls();
  // A box that lives on keeps its state; every control goes.
  EXPECT_EQ(std::count(factory.record.calls.begin(), factory.record.calls.end(), "save TmvDataSourceObject#0"), 1);
  EXPECT_TRUE(factory.controls.empty());
  EXPECT_FALSE(First()->HasControls());
}

TEST_F(ModelTest, UpdateOnADatasourceHoldsBackTheQuerysNews) {
  Load("SELECT a.x FROM a, b");
  int updates = 0;
  host->OnSQLUpdated = [&](mv::TmvQueryModelHost*) { ++updates; };
  auto* a = mv::TmvCast<mv::TmvDatasource>(First()->Datasources()->Items(0));
  a->BeginUpdate();
  a->SetAlias(u"x");
  a->SetAlias(u"y");
  First()->AddObject(u"c", u"");
  Query()->Add();
  EXPECT_EQ(updates, 0);
  a->EndUpdate();
  EXPECT_EQ(updates, 1);
  // The text is made when it is read, once.
  EXPECT_FALSE(Query()->HasCachedResultAST());
  EXPECT_EQ(Sql(), "Select y.x From a y, b, c Union Select *");
  EXPECT_TRUE(Query()->HasCachedResultAST());
  EXPECT_EQ(updates, 1);
}

TEST_F(ModelTest, HandlersMayDeleteAndReloadWhatTheyAreTold) {
  Load("SELECT * FROM x");
  host->OnAfterAddDatasource = [](mv::TmvQueryModelHost*, mv::TmvUnionSubQuery*, mv::TmvDatasource* added) {
    added->RequestDestroy();
  };
  EXPECT_EQ(First()->AddObject(u"t", u""), nullptr);
  EXPECT_EQ(Sql(), "Select * From x");
  host->OnAfterAddDatasource = nullptr;
  // News of a change loads other text: the model it was about is gone.
  int reloads = 0;
  host->OnSQLUpdated = [&](mv::TmvQueryModelHost*) {
    if (reloads++ == 0) Load("SELECT b FROM u UNION SELECT c FROM v");
  };
  First()->AddObject(u"t", u"");
  EXPECT_EQ(Sql(), "Select b From u UNION Select c From v");
}

}  // namespace
}  // namespace mvtest
