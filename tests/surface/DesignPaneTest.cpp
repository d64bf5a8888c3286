// The design pane driven as a user drives it, offscreen: each test acts on
// the widgets and checks the model and the SQL text that follow.
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QToolButton>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QTabWidget>
#include <QTableWidget>
#include <QtTest>
#include <functional>

#include "ReferenceDialect.h"
#include "component/ExpressionBuilderParams.h"
#include "component/QueryBuilder.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "surface/AddObjectDialog.h"
#include "surface/DatasourceControl.h"
#include "surface/DesignPane.h"
#include "surface/DragData.h"
#include "surface/LinkControl.h"
#include "surface/LinkGeometry.h"
#include "surface/LinkPainters.h"
#include "surface/ModelMenu.h"
#include "surface/PropertiesDialog.h"
#include "surface/QtMainThread.h"
#include "surface/QtText.h"
#include "surface/SelectListGrid.h"
#include "surface/SubQueryControls.h"
#include "surface/TreeViews.h"
#include "surface/UnionDragDrop.h"
#include "surface/UnionSubQueryPage.h"

using namespace mv;

class DesignPaneTest : public QObject {
  Q_OBJECT

 private:
  TmvOwned<TmvBaseSyntaxProvider> provider_;
  TmvOwned<TmvQueryBuilder> builder_;
  std::unique_ptr<TmvDesignPane> pane_;

  QString Sql() const { return ToQString(builder_->GetSql()); }
  void SetSql(const char16_t* text) { builder_->SetSql(text); }
  TmvUnionSubQuery* Member() const { return builder_->Query()->ActiveUnionSubQuery(); }
  TmvDatasource* Datasource(int index) const {
    TmvDatasourceList list;
    Member()->Datasources()->GetDatasources(list);
    return index < static_cast<int>(list.size()) ? list[index] : nullptr;
  }
  TmvQueryBuilderDataSourceControl* Box(int index) const { return pane_->DatasourceControl(Datasource(index)); }
  // The row of a field by its text in a box's list.
  static int RowOf(TmvQueryBuilderDataSourceControl* box, const QString& text) {
    const QList<QListWidgetItem*> found = box->FieldsList()->findItems(text, Qt::MatchExactly);
    return found.isEmpty() ? -1 : box->FieldsList()->row(found.first());
  }
  // A drag that enters `target` at `point` and drops there, as Qt delivers
  // it; whether the drop was taken.
  static bool Drop(QMimeData* carried, QWidget* target, const QPoint& point) {
    std::unique_ptr<QMimeData> mime(carried);
    QDragEnterEvent enter(point, Qt::CopyAction | Qt::LinkAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent drop(point, Qt::CopyAction | Qt::LinkAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &drop);
    return drop.isAccepted();
  }
  // Acts on the next modal dialog of class D once it shows: `act` fills it
  // in and presses its buttons; `open` is what opens it.
  template <class D>
  static void InDialog(const std::function<void()>& open, const std::function<void(D*)>& act) {
    bool seen = false;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
      auto* dialog = qobject_cast<D*>(QApplication::activeModalWidget());
      if (!dialog || seen) return;
      seen = true;
      act(dialog);
      if (dialog->isVisible()) dialog->reject();  // a failed check must not hang the test
    });
    poll.start(10);
    open();
    QTRY_VERIFY(seen);
    QCoreApplication::processEvents();
  }
  static void Type(QDialog* dialog, const char* edit, const QString& text) {
    auto* line = dialog->findChild<QLineEdit*>(QString::fromLatin1(edit));
    QVERIFY2(line && line->isEnabled(), edit);
    line->clear();
    QTest::keyClicks(line, text);
  }
  static void Press(QDialog* dialog, const char* name) {
    auto* button = dialog->findChild<QAbstractButton*>(QString::fromLatin1(name));
    QVERIFY2(button && button->isEnabled(), name);
    button->click();  // as a click: the offscreen platform may not have laid the dialog out yet
  }
  TmvSelectListGrid* Grid() const {
    return pane_->UnionSubQueryPage(Member())->LowerPanel()->findChild<TmvSelectListGrid*>();
  }

 private slots:
  void initTestCase() {
    BindMainThreadDispatcherToQt();
    provider_ = mvtest::NewReferenceProvider();
  }

  void init() {
    builder_ = TmvCreate<TmvQueryBuilder>();
    builder_->SetSyntaxProvider(provider_.get());
    TmvMetadataContainer* container = builder_->MetadataContainer();
    auto addTable = [container](const char16_t* name, std::initializer_list<const char16_t*> fields) {
      TmvMetadataTable* table = container->AddTable(name);
      bool key = true;
      for (const char16_t* field : fields) {
        table->GetFields()->AddField(field)->SetPrimaryKey(key);
        key = false;
      }
    };
    addTable(u"Customer", {u"CustomerId", u"Name", u"Country"});
    addTable(u"Invoice", {u"InvoiceId", u"CustomerId", u"Total"});
    addTable(u"Track", {u"TrackId", u"Name"});
    container->SetWorkOffline(true);
    pane_ = std::make_unique<TmvDesignPane>();
    pane_->resize(1000, 700);
    pane_->SetQueryBuilder(builder_.get());
    pane_->show();
  }

  void cleanup() {
    pane_.reset();
    builder_.reset();
  }

  // New text: a box per datasource at the free places, its fields listed;
  // text that changes keeps the boxes that remain where they stood.
  void boxesFollowTheTextAndKeepTheirPlaces() {
    SetSql(u"SELECT c.Name FROM Customer c, Invoice i WHERE c.CustomerId = i.CustomerId");
    QVERIFY(Box(0) && Box(1));
    QCOMPARE(Box(0)->pos(), QPoint(20, 10));
    QCOMPARE(Box(1)->pos(), QPoint(20 + 160 + 60, 10));
    QCOMPARE(Box(0)->FieldsList()->count(), 4);  // "*" and three fields
    QCOMPARE(Box(0)->FieldsList()->item(2)->checkState(), Qt::Checked);  // Name

    Datasource(1)->SetLeft(500);
    Datasource(1)->SetTop(200);
    QCOMPARE(Box(1)->pos(), QPoint(500, 200));
    SetSql(u"SELECT c.Name, t.Name FROM Customer c, Invoice i, Track t WHERE c.CustomerId = i.CustomerId");
    QCOMPARE(Box(1)->pos(), QPoint(500, 200));
    QVERIFY(Box(2));
    QVERIFY(!Box(2)->geometry().intersects(Box(0)->geometry()));
    QVERIFY(!Box(2)->geometry().intersects(Box(1)->geometry()));
  }

  // An object of the metadata dropped on the work area becomes a box there.
  // Text from another program becomes a datasource only where OLEDragDrop allows it.
  void droppingTextOnTheAreaAddsIt() {
    SetSql(u"SELECT c.Name FROM Customer c");
    TmvWorkAreaCanvas* canvas = pane_->UnionSubQueryPage(Member())->WorkArea()->Canvas();
    auto text = [] {
      auto* mime = new QMimeData;
      mime->setText(QStringLiteral("Track"));
      return mime;
    };
    QVERIFY(!Drop(text(), canvas, QPoint(300, 40)));
    builder_->SetOLEDragDrop(true);
    QVERIFY(Drop(text(), canvas, QPoint(300, 40)));
    QVERIFY2(Sql().contains(QStringLiteral("Customer c, Track"), Qt::CaseInsensitive), qPrintable(Sql()));
  }

  void droppingAnObjectOnTheAreaAddsIt() {
    SetSql(u"SELECT c.Name FROM Customer c");
    TmvMetadataObject* invoice = builder_->MetadataContainer()->Items(1);
    QWidget* canvas = pane_->UnionSubQueryPage(Member())->WorkArea()->Canvas();
    QVERIFY(Drop(NewMetadataObjectDrag(invoice), canvas, QPoint(400, 150)));
    QVERIFY2(Sql().contains(QStringLiteral("Invoice")), qPrintable(Sql()));
    QCOMPARE(Box(1)->pos(), QPoint(400, 150));
    QVERIFY(!Drop(new QMimeData, canvas, QPoint(10, 10)));
  }

  // A tick enters the field into the select list, an untick takes it out.
  void tickingAFieldSelectsIt() {
    SetSql(u"SELECT c.Name FROM Customer c");
    TmvQueryBuilderDataSourceControl* box = Box(0);
    QListWidgetItem* country = box->FieldsList()->item(RowOf(box, QStringLiteral("Country")));
    country->setCheckState(Qt::Checked);
    QVERIFY2(Sql().contains(QStringLiteral("c.Country")), qPrintable(Sql()));
    QCOMPARE(Member()->SelectList()->Items(1)->GetExpressionString(), WideString(u"c.Country"));
    box->FieldsList()->item(RowOf(box, QStringLiteral("Name")))->setCheckState(Qt::Unchecked);
    QVERIFY2(!Sql().contains(QStringLiteral("c.Name")), qPrintable(Sql()));
    QCOMPARE(Grid()->item(0, TmvSelectListGrid::colExpression)->text(), QStringLiteral("c.Country"));
  }

  // A field dropped on a field of another box links them: the join appears.
  void droppingAFieldOnAnotherLinksThem() {
    SetSql(u"SELECT c.Name FROM Customer c, Invoice i");
    TmvQueryBuilderDataSourceControl* from = Box(0);
    TmvQueryBuilderDataSourceControl* to = Box(1);
    const int fromRow = RowOf(from, QStringLiteral("CustomerId"));
    const int toRow = RowOf(to, QStringLiteral("CustomerId"));
    QVERIFY(!to->CanLinkFields(to, toRow, toRow));                                  // same box
    QVERIFY(!to->CanLinkFields(from, RowOf(from, QStringLiteral("*")), toRow));    // the "*" row
    // The drop as Qt delivers it to the list under the pointer.
    QListWidget* list = to->FieldsList();
    QVERIFY2(Drop(NewFieldDrag(from, fromRow), list->viewport(), list->visualItemRect(list->item(toRow)).center()),
             "the drop was refused");
    QVERIFY2(Sql().contains(QStringLiteral("c.CustomerId = i.CustomerId")), qPrintable(Sql()));
    // The same link again is refused.
    QVERIFY(!to->CanLinkFields(from, fromRow, toRow));
    // A click on the link's stub focuses it; Delete removes it.
    TmvWorkAreaCanvas* canvas = pane_->UnionSubQueryPage(Member())->WorkArea()->Canvas();
    QCOMPARE(canvas->Links().size(), size_t(1));
    TmvLinkPath path;
    QVERIFY(canvas->Links()[0]->CalcPath(path));
    QTest::mouseClick(canvas, Qt::LeftButton, Qt::NoModifier, (path.Points[0] + path.Points[1]) / 2);
    QCOMPARE(canvas->FocusedLink(), canvas->Links()[0]);
    QTest::keyClick(canvas, Qt::Key_Delete);
    QVERIFY2(!Sql().contains(QStringLiteral("c.CustomerId = i.CustomerId")), qPrintable(Sql()));
    QVERIFY(canvas->Links().empty());
  }

  // Where links run between two rows, and which clicks reach them.
  void linkPathsAndHits() {
    struct Case {
      const char* what;
      QRect a, b;
      TmvQueryBuilderLinkConnectToSide left, right;
      QPoint stubEndA, stubEndB;
      QRect bounds;
    } cases[] = {
        {"side by side, gap 100", QRect(20, 50, 160, 14), QRect(280, 80, 160, 14), csRight, csLeft, QPoint(196, 57),
         QPoint(264, 87), QRect(176, 30, 108, 68)},
        {"gap 10: room for both stubs, which cross", QRect(20, 50, 160, 14), QRect(190, 50, 160, 14), csRight,
         csLeft, QPoint(196, 57), QPoint(174, 57), QRect(170, 30, 30, 38)},
        {"stacked with equal lefts: both leave left", QRect(20, 50, 160, 14), QRect(20, 200, 160, 14), csLeft,
         csLeft, QPoint(4, 57), QPoint(4, 207), QRect(0, 30, 24, 188)},
        {"right box first", QRect(300, 50, 160, 14), QRect(20, 50, 160, 14), csLeft, csRight, QPoint(284, 57),
         QPoint(196, 57), QRect(176, 30, 128, 38)},
    };
    for (const Case& c : cases) {
      const TmvLinkPath path = AlignLink(c.a, c.b);
      QVERIFY2(path.LeftSide == c.left && path.RightSide == c.right, c.what);
      QVERIFY2(path.Points[1] == c.stubEndA && path.Points[2] == c.stubEndB, c.what);
      QVERIFY2(path.Bounds == c.bounds, c.what);
    }
    const TmvLinkPath path = AlignLink(QRect(20, 50, 160, 14), QRect(280, 80, 160, 14));
    QVERIFY(IsPointOnLink(path.Points, QPoint(188, 57 - 6)));   // 6 from a stub: on it
    QVERIFY(!IsPointOnLink(path.Points, QPoint(188, 57 - 7)));  // 7: what lies below
    QVERIFY(IsPointOnLink(path.Points, (path.Points[1] + path.Points[2]) / 2 + QPoint(0, 3)));  // the diagonal
    // Painters by class name and by style; an unknown name draws as Access.
    QCOMPARE(LinkPainters().CreateByName(QStringLiteral("TmvQueryBuilderLinkPainterMSSQL"))->PainterStyle(),
             QStringLiteral("MS SQL Style"));
    QCOMPARE(LinkPainters().CreateByName(QStringLiteral("NoSuchPainter"))->PainterStyle(),
             QStringLiteral("Access Style"));
    QCOMPARE(LinkPainters().CreateByUserName(QStringLiteral("Simple"))->PainterStyle(), QStringLiteral("Simple"));
    QCOMPARE(LinkPainters().GetUserNames(), (std::vector<QString>{QStringLiteral("Simple"), QStringLiteral("MS SQL Style"),
                                                                  QStringLiteral("Access Style")}));
  }

  // Cells typed into the grid go to the model: criteria become the WHERE
  // clause, an alias the column's name, text that is no expression a string.
  void gridEditsFollowIntoTheText() {
    SetSql(u"SELECT c.Name FROM Customer c");
    struct Edit {
      int column;
      const char* text;
      const char* expected;
    } edits[] = {
        {TmvSelectListGrid::colCriteria, "> 'M'", "Where c.Name > 'M'"},
        {TmvSelectListGrid::colAlias, "CustomerName", "c.Name As CustomerName"},
        {TmvSelectListGrid::colExpression, "c.Name +", "'c.Name +'"},
    };
    // The list columns offer the row's choices.
    QVERIFY(Grid()->ChoicesFor(0, TmvSelectListGrid::colAggregate).contains(QStringLiteral("Count")));
    QCOMPARE(Grid()->ChoicesFor(0, TmvSelectListGrid::colSortType),
             (QStringList{QString(), QStringLiteral("Ascending"), QStringLiteral("Descending")}));
    QCOMPARE(Grid()->ChoicesFor(0, TmvSelectListGrid::colExpression),
             (QStringList{QStringLiteral("c.*"), QStringLiteral("c.CustomerId"), QStringLiteral("c.Name"),
                          QStringLiteral("c.Country")}));
    QCOMPARE(Grid()->ChoicesFor(0, TmvSelectListGrid::colSortOrder), QStringList{QStringLiteral("1")});
    for (const Edit& edit : edits) {
      Grid()->item(0, edit.column)->setText(QString::fromUtf8(edit.text));
      QTRY_VERIFY2(Sql().contains(QString::fromUtf8(edit.expected), Qt::CaseInsensitive), qPrintable(Sql()));
      // The grid shows what the model made of the text.
      QCOMPARE(Grid()->item(0, TmvSelectListGrid::colCriteria)->text().isEmpty(), false);
    }
  }

  // The grid's keys move, insert and remove rows, a row dragged by its
  // header moves in the query, a field dropped from a box becomes a row.
  void gridRowsMoveByKeysAndDrops() {
    SetSql(u"SELECT c.Name, c.Country FROM Customer c");
    Grid()->setFocus();
    Grid()->setCurrentCell(0, TmvSelectListGrid::colExpression);
    QTest::keyClick(Grid(), Qt::Key_Down, Qt::ControlModifier);
    QTRY_VERIFY2(Sql().contains(QStringLiteral("Select c.Country, c.Name"), Qt::CaseInsensitive), qPrintable(Sql()));
    QTRY_COMPARE(Grid()->currentRow(), 1);
    Grid()->verticalHeader()->moveSection(1, 0);
    QTRY_VERIFY2(Sql().contains(QStringLiteral("Select c.Name, c.Country"), Qt::CaseInsensitive), qPrintable(Sql()));
    const int fieldRow = RowOf(Box(0), QStringLiteral("CustomerId"));
    QVERIFY(Drop(NewFieldDrag(Box(0), fieldRow), Grid()->viewport(), Grid()->visualItemRect(Grid()->item(1, 1)).center()));
    QTRY_VERIFY2(Sql().contains(QStringLiteral("Select c.Name, c.CustomerId, c.Country"), Qt::CaseInsensitive),
                 qPrintable(Sql()));
    Grid()->setCurrentCell(1, TmvSelectListGrid::colExpression);
    QTest::keyClick(Grid(), Qt::Key_Delete, Qt::ControlModifier);
    QTRY_VERIFY2(!Sql().contains(QStringLiteral("CustomerId")), qPrintable(Sql()));
  }

  // With the host's expression editor, a double click on an expression cell
  // hands the cell to it and its answer becomes the row's expression; the
  // row's menu offers it too.
  void gridCellsOpenTheHostsEditorAndSubQueries() {
    SetSql(u"SELECT c.Name, (SELECT Count(*) FROM Invoice i) AS Invoices FROM Customer c");
    builder_->OnCustomExpressionBuilder = [](TmvQueryBuilder*, std::shared_ptr<ImvExpressionBuilderParams> params) {
      QCOMPARE(params->Get_OldExpression(), WideString(u"c.Name"));
      params->Set_NewExpression(u"Upper(c.Name)");
    };
    emit Grid()->cellDoubleClicked(0, TmvSelectListGrid::colExpression);
    QTRY_VERIFY2(Sql().contains(QStringLiteral("Select Upper(c.Name)"), Qt::CaseInsensitive), qPrintable(Sql()));
    const QRect cell = Grid()->visualItemRect(Grid()->item(1, TmvSelectListGrid::colExpression));
    QStringList texts;
    QTimer::singleShot(0, [&] {
      auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      if (!popup) return;
      const QList<QAction*> actions = popup->actions();
      texts.clear();
      for (QAction* action : actions) texts << action->text();
      popup->close();
    });
    emit Grid()->customContextMenuRequested(cell.center());
    QVERIFY2(texts.size() > 1 && texts[0] == QStringLiteral("Build expression..."), qPrintable(texts.join(u'|')));
  }

  // A union gets a button per SELECT; a click shows that SELECT's page.
  void unionButtonsSwitchTheMembers() {
    SetSql(u"SELECT c.Name FROM Customer c UNION ALL SELECT t.Name FROM Track t");
    QList<TmvUnionButton*> buttons = pane_->findChildren<TmvUnionButton*>();
    QCOMPARE(buttons.size(), 2);
    TmvUnionButton* second = buttons[0]->Member() == Member() ? buttons[1] : buttons[0];
    QTest::mouseClick(second, Qt::LeftButton);
    QCOMPARE(Member(), second->Member());
    auto* stack = qobject_cast<QStackedWidget*>(pane_->UnionSubQueryPage(Member())->parentWidget());
    QCOMPARE(stack->currentWidget(), pane_->UnionSubQueryPage(Member()));
    QCOMPARE(pane_->findChildren<TmvUnionOperator*>().size(), 2);
    // The button's menu moves the SELECT: the second one first.
    QMenu menu;
    FillQMenu(menu, second->Member()->GetPopupMenu(second));
    menu.findChild<QAction*>(QStringLiteral("mvMoveLeft"))->trigger();
    QCoreApplication::processEvents();
    QVERIFY2(Sql().startsWith(QStringLiteral("Select t.Name"), Qt::CaseInsensitive), qPrintable(Sql()));
  }

  // A datasource's menu comes from the model: Check All ticks every field,
  // Remove takes the datasource and its box away.
  void datasourceMenuRunsTheModelsEntries() {
    SetSql(u"SELECT c.Name FROM Customer c, Invoice i");
    QMenu menu;
    FillQMenu(menu, Datasource(1)->GetPopupMenu(Box(1)));
    auto run = [&menu](const char* key) {
      QAction* action = menu.findChild<QAction*>(QString::fromLatin1(key));
      QVERIFY2(action && action->isEnabled(), key);
      action->trigger();
      QCoreApplication::processEvents();
    };
    run("mvQBCheckAll");
    QVERIFY2(Sql().contains(QStringLiteral("i.Total")), qPrintable(Sql()));
    run("mvQBRemove");
    QVERIFY2(!Sql().contains(QStringLiteral("Invoice")), qPrintable(Sql()));
    QCOMPARE(pane_->findChildren<TmvQueryBuilderDataSourceControl*>().size(), 1);
  }

  // The caption row's buttons collapse a box and offer its linked objects
  // while it has the focus; the wheel scrolls the area, Shift sideways.
  void boxButtonsAndTheWheel() {
    SetSql(u"SELECT c.Name FROM Customer c");
    TmvQueryBuilderDataSourceControl* box = Box(0);
    const int expanded = box->height();
    box->CollapseButton()->click();
    QVERIFY(Datasource(0)->Collapsed());
    QTRY_VERIFY(box->height() < expanded && !box->FieldsList()->isVisible());
    box->CollapseButton()->click();
    QTRY_COMPARE(box->height(), expanded);
    QVERIFY(!box->LinkedObjectsButton()->isVisible());
    box->FieldsList()->setFocus();
    QTRY_VERIFY(box->LinkedObjectsButton()->isVisible());
    Datasource(0)->SetLeft(3000);
    Datasource(0)->SetTop(3000);
    TmvQueryBuilderWorkArea* area = pane_->UnionSubQueryPage(Member())->WorkArea();
    QTRY_VERIFY(area->horizontalScrollBar()->isVisible());
    auto wheel = [area](Qt::KeyboardModifiers modifiers) {
      QWheelEvent event(QPointF(50, 50), QPointF(50, 50), QPoint(), QPoint(0, -120), Qt::NoButton, modifiers,
                        Qt::NoScrollPhase, false);
      QCoreApplication::sendEvent(area->viewport(), &event);
    };
    wheel(Qt::ShiftModifier);
    QCOMPARE(area->horizontalScrollBar()->value(), 120);
    QCOMPARE(area->verticalScrollBar()->value(), 0);
    wheel(Qt::NoModifier);
    QCOMPARE(area->verticalScrollBar()->value(), 120);
    wheel(Qt::ControlModifier);
    QCOMPARE(area->verticalScrollBar()->value(), 120);
  }

  // A double click opens an object's properties: the datasource's alias, a
  // refused alias keeping the dialog open with its message, the link's
  // outer side, the SELECT's mode; OK writes the text, Cancel nothing.
  void propertiesDialogsEditTheQuery() {
    SetSql(u"SELECT c.Name FROM Customer c INNER JOIN Invoice i ON c.CustomerId = i.CustomerId");
    auto doubleClickCaption = [this] { QTest::mouseDClick(Box(1)->CaptionLabel(), Qt::LeftButton); };
    InDialog<TmvPropertiesDialog>(doubleClickCaption, [](TmvPropertiesDialog* dialog) {
      QCOMPARE(dialog->objectName(), QStringLiteral("TmvDatasourcePropsForm"));
      QVERIFY(dialog->findChild<QLineEdit*>(QStringLiteral("eObject"))->isReadOnly());
      Type(dialog, "eAlias", QStringLiteral("c"));
      Press(dialog, "OK");
      QCOMPARE(dialog->Message(), QStringLiteral("Alias \"c\" already exists"));
      QVERIFY(dialog->isVisible());
      Press(dialog, "Cancel");
    });
    QVERIFY2(Sql().contains(QStringLiteral("Invoice i ")), qPrintable(Sql()));
    InDialog<TmvPropertiesDialog>(doubleClickCaption, [](TmvPropertiesDialog* dialog) {
      Type(dialog, "eAlias", QStringLiteral("inv"));
      Press(dialog, "OK");
    });
    QVERIFY2(Sql().contains(QStringLiteral("Invoice inv On c.CustomerId = inv.CustomerId"), Qt::CaseInsensitive),
             qPrintable(Sql()));
    TmvWorkAreaCanvas* canvas = pane_->UnionSubQueryPage(Member())->WorkArea()->Canvas();
    TmvLinkPath path;
    QVERIFY(canvas->Links()[0]->CalcPath(path));
    InDialog<TmvPropertiesDialog>(
        [&] { QTest::mouseDClick(canvas, Qt::LeftButton, Qt::NoModifier, (path.Points[0] + path.Points[1]) / 2); },
        [](TmvPropertiesDialog* dialog) {
          QCOMPARE(dialog->objectName(), QStringLiteral("TmvLinkPropsForm"));
          Press(dialog, "cbAllFromLeft");
          Press(dialog, "OK");
        });
    QVERIFY2(Sql().contains(QStringLiteral("Customer c Left Join Invoice inv"), Qt::CaseInsensitive), qPrintable(Sql()));
    TmvUnionButton* button = pane_->findChildren<TmvUnionButton*>().first();
    InDialog<TmvPropertiesDialog>([&] { QTest::mouseDClick(button, Qt::LeftButton); },
                                  [](TmvPropertiesDialog* dialog) {
                                    Press(dialog, "rbDistinct");
                                    Press(dialog, "OK");
                                  });
    QVERIFY2(Sql().startsWith(QStringLiteral("Select Distinct"), Qt::CaseInsensitive), qPrintable(Sql()));
  }

  // The work area's "Add Object..." lists what the metadata tree shows; the
  // chosen table is added, and a procedure after its parameter values are
  // asked for. A hidden tab is not there at all.
  void addObjectDialogAddsTheChosenObjects() {
    builder_->MetadataContainer()->AddProcedure(u"Totals");
    builder_->AddObjectFormOptions().SetSynonymsVisible(false);
    SetSql(u"SELECT c.Name FROM Customer c");
    QMenu menu;
    FillQMenu(menu, Member()->GetPopupMenu(Member()->GetControls(0)));
    QAction* entry = menu.findChild<QAction*>(QStringLiteral("mvAddObject"));
    QVERIFY(entry && entry->isEnabled());
    InDialog<TmvAddObjectDialog>([&] { entry->trigger(); }, [](TmvAddObjectDialog* dialog) {
      QCOMPARE(dialog->Pages()->count(), 3);
      QVERIFY(!dialog->Schemas()->isEnabled());  // no schemas at all
      QListWidget* tables = dialog->List(TmvAddObjectForm::tsTables);
      tables->findItems(QStringLiteral("Track"), Qt::MatchExactly).first()->setSelected(true);
      Press(dialog, "bAdd");
      dialog->Pages()->setCurrentIndex(2);
      QListWidget* procedures = dialog->List(TmvAddObjectForm::tsProcedures);
      procedures->item(0)->setSelected(true);
      // The parameters are asked in a dialog of their own.
      InDialog<TmvPropertiesDialog>([&] { Press(dialog, "bAdd"); }, [](TmvPropertiesDialog* params) {
        QCOMPARE(params->objectName(), QStringLiteral("TmvProcedureParams"));
        Type(params, "eParams", QStringLiteral("2024, 'EUR'"));
        Press(params, "OK");
      });
      Press(dialog, "bClose");
    });
    QVERIFY2(Sql().contains(QStringLiteral("Track")), qPrintable(Sql()));
    QVERIFY2(Sql().contains(QStringLiteral("Totals(2024, 'EUR') Totals_")), qPrintable(Sql()));
  }

  // The metadata tree adds what is double-clicked; the structure tree shows
  // the query and makes the SELECT of a selected node the active one.
  void treesAddObjectsAndFollowTheQuery() {
    SetSql(u"SELECT c.Name FROM Customer c UNION SELECT t.Name FROM Track t");
    TmvTreeViewMetadata metadata(builder_.get());
    metadata.ReloadNodes();
    QTreeWidgetItem* invoice =
        metadata.findItems(QStringLiteral("Invoice"), Qt::MatchExactly | Qt::MatchRecursive).value(0);
    QVERIFY(invoice);
    emit metadata.itemDoubleClicked(invoice, 0);
    QVERIFY2(Sql().contains(QStringLiteral("Invoice")), qPrintable(Sql()));

    // A background load shows a loading node only in an empty tree.
    metadata.NotifyAsyncLoadingStarted();
    QVERIFY(metadata.findItems(QStringLiteral("Loading..."), Qt::MatchExactly).isEmpty());
    metadata.clear();
    metadata.NotifyAsyncLoadingStarted();
    QCOMPARE(metadata.topLevelItem(0)->text(0), QStringLiteral("Loading..."));
    metadata.NotifyAsyncLoadingCompleted();
    QCOMPARE(metadata.topLevelItemCount(), 0);
    builder_->MetadataLoadedNotification.Fire(builder_.get());  // the objects have come
    QVERIFY(metadata.topLevelItemCount() > 0);

    TmvTreeViewQueryStructure structure(builder_.get());
    structure.UpdateQueryStructure();
    QTreeWidgetItem* track =
        structure.findItems(QStringLiteral("Track t"), Qt::MatchExactly | Qt::MatchRecursive).value(0);
    QVERIFY(track);
    structure.setCurrentItem(track);
    QCOMPARE(Member()->GetFromClauseString().find(u"Track") != WideString::npos, true);
    // A closed node stays closed when the query changes.
    QTreeWidgetItem* fields = track->parent()->parent()->child(0);
    fields->setExpanded(false);
    Datasource(0)->SetFieldChecked(nullptr, true);
    structure.UpdateQueryStructure();
    QTreeWidgetItem* again =
        structure.findItems(QStringLiteral("Track t"), Qt::MatchExactly | Qt::MatchRecursive).value(0);
    QVERIFY(again && !again->parent()->parent()->child(0)->isExpanded());
  }

  // Parts of a union dragged onto others: which drops are taken and where
  // the parts go, with the operators kept in their places.
  void unionPartsMoveByDragging() {
    using Item = TmvUnionDragItem;
    auto member = [this](int index) { return builder_->Query()->UnionSubQueries()[index]; };
    auto button = [&](int index) { return Item{member(index), Item::Button}; };
    SetSql(u"SELECT 1 FROM Track t UNION ALL SELECT 2 FROM Track t EXCEPT SELECT 3 FROM Track t");
    QVERIFY(CanDropUnionItem(button(0), button(0)));
    DropUnionItem(button(0), button(0));  // onto itself: nothing
    const QString before = Sql();
    QCOMPARE(Sql(), before);
    DropUnionItem(button(1), button(0));  // the first behind the second
    QVERIFY2(Sql().startsWith(QStringLiteral("Select 2 From Track t Union All Select 1"), Qt::CaseInsensitive),
             qPrintable(Sql()));
    // Into brackets and out again: the group goes with its last member.
    SetSql(u"SELECT 1 FROM Track t UNION (SELECT 2 FROM Track t UNION SELECT 3 FROM Track t)");
    auto* group = TmvCast<TmvUnionGroup>(builder_->Query()->Items(1));
    QVERIFY(group);
    const Item right{group, Item::RightBracket}, left{group, Item::LeftBracket};
    QVERIFY(CanDropUnionItem(button(0), left));    // the member stands before the group
    QVERIFY(!CanDropUnionItem(button(0), right));  // ... not after it
    DropUnionItem(button(0), left);
    QVERIFY2(Sql().startsWith(QStringLiteral("(Select 1"), Qt::CaseInsensitive), qPrintable(Sql()));
    SetSql(u"SELECT 1 FROM Track t UNION (SELECT 2 FROM Track t)");
    group = TmvCast<TmvUnionGroup>(builder_->Query()->Items(1));
    QVERIFY(group);
    DropUnionItem(button(0), button(1));  // the second out of its group, before the first
    QCOMPARE(builder_->Query()->Count(), 2);
    QVERIFY(!TmvCast<TmvUnionGroup>(builder_->Query()->Items(0)) && !TmvCast<TmvUnionGroup>(builder_->Query()->Items(1)));
    // The menus of a bracket and of an operator come from the model.
    SetSql(u"SELECT 1 FROM Track t UNION ALL (SELECT 2 FROM Track t UNION SELECT 3 FROM Track t)");
    QList<TmvBracket*> brackets = pane_->findChildren<TmvBracket*>();
    QCOMPARE(brackets.size(), 2);
    TmvBracket* leftBracket = brackets[0]->IsLeft() ? brackets[0] : brackets[1];
    QMenu bracketMenu;
    FillQMenu(bracketMenu, leftBracket->Group()->GetPopupMenu(leftBracket));
    bracketMenu.findChild<QAction*>(QStringLiteral("mvMoveLeft"))->trigger();  // the first SELECT comes in
    QCoreApplication::processEvents();
    QVERIFY2(Sql().startsWith(QStringLiteral("(Select 1"), Qt::CaseInsensitive), qPrintable(Sql()));
    QStringList checked;
    for (const TmvMenuItem& entry : member(1)->GetUnionOperatorMenu())
      if (entry.Checked) checked << ToQString(entry.Caption);
    QCOMPARE(checked.size(), 1);  // the operator in force, and only it
    QCOMPARE(checked[0].toUpper(), ToQString(member(1)->GetUnionOperatorFull()).toUpper());
    // The same through the navigator: the second SELECT's button dropped on the first's.
    SetSql(u"SELECT 1 FROM Track t UNION SELECT 2 FROM Track t");
    TmvUnionButton* first = nullptr;
    for (TmvUnionButton* each : pane_->findChildren<TmvUnionButton*>())
      if (each->Member() == member(0)) first = each;
    QVERIFY(first && Drop(NewUnionItemDrag(button(1)), first, QPoint(5, 5)));
    QCoreApplication::processEvents();
    QVERIFY2(Sql().startsWith(QStringLiteral("Select 2"), Qt::CaseInsensitive), qPrintable(Sql()));
  }

  // Boxes moved by their caption keep to the grid and never leave the area.
  void movingABoxSnapsToTheGrid() {
    builder_->SetGridSize(10);
    SetSql(u"SELECT c.Name FROM Customer c");
    QLabel* caption = Box(0)->CaptionLabel();
    QTest::mousePress(caption, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    QMouseEvent move(QEvent::MouseMove, QPointF(5 + 33, 5 + 47), caption->mapToGlobal(QPointF(5 + 33, 5 + 47)),
                     Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(caption, &move);
    QTest::mouseRelease(caption, Qt::LeftButton, Qt::NoModifier, QPoint(5 + 33, 5 + 47));
    QCOMPARE(QPoint(Datasource(0)->Left(), Datasource(0)->Top()), QPoint(50, 50));
    QCOMPARE(Box(0)->pos(), QPoint(50, 50));
  }
};

QTEST_MAIN(DesignPaneTest)
#include "DesignPaneTest.moc"
