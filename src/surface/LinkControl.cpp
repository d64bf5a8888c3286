#include "surface/LinkControl.h"

#include <QPainter>

#include "model/Datasources.h"
#include "model/Links.h"
#include "surface/DatasourceControl.h"
#include "surface/UnionSubQueryPage.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

// The last part of a column name, as the box lists it.
WideString FieldNameOf(const TSQLQualifiedName* name) {
  if (!name) return {};
  WideString text = name->GetQualifiedNameWithoutQuotes();
  const size_t dot = text.rfind(u'.');
  return dot == WideString::npos ? text : text.substr(dot + 1);
}

}  // namespace

TmvLinkControl::TmvLinkControl(TmvLink* link, TmvWorkAreaCanvas* canvas) : link_(link), canvas_(canvas) {
  if (canvas_) canvas_->AddLink(this);
}

TmvLinkControl::~TmvLinkControl() {
  if (canvas_) canvas_->RemoveLink(this);
}

void TmvLinkControl::Realign() {
  if (canvas_) canvas_->update();
}

bool TmvLinkControl::CalcLine(QLine& line) const {
  if (!canvas_) return false;
  TmvQueryBuilderDataSourceControl* left = canvas_->BoxOf(link_->LeftDatasource());
  TmvQueryBuilderDataSourceControl* right = canvas_->BoxOf(link_->RightDatasource());
  if (!left || !right || left == right) return false;
  const TmvRect a = left->CalcFieldRect(FieldNameOf(link_->LeftField()));
  const TmvRect b = right->CalcFieldRect(FieldNameOf(link_->RightField()));
  const int ay = (a.Top + a.Bottom) / 2, by = (b.Top + b.Bottom) / 2;
  // Each end leaves its box by the side facing the other box.
  const bool leftFirst = (a.Left + a.Right) <= (b.Left + b.Right);
  line = leftFirst ? QLine(a.Right, ay, b.Left, by) : QLine(a.Left, ay, b.Right, by);
  return true;
}

void TmvLinkControl::Paint(QPainter& painter) const {
  QLine line;
  if (!CalcLine(line)) return;
  // A short stub out of each box, so that the line meets the row squarely.
  const int stub = line.x1() <= line.x2() ? 10 : -10;
  const QPoint start = line.p1(), end = line.p2();
  const QPoint startOut(start.x() + stub, start.y()), endOut(end.x() - stub, end.y());
  painter.drawLine(start, startOut);
  painter.drawLine(startOut, endOut);
  painter.drawLine(endOut, end);
  // An outer side is marked by a filled end.
  if (link_->LeftType() == ltOuter) painter.drawEllipse(start, 3, 3);
  if (link_->RightType() == ltOuter) painter.drawEllipse(end, 3, 3);
}

}  // namespace mv
