#include "surface/LinkControl.h"

#include <QPainter>

#include "model/Datasources.h"
#include "model/Links.h"
#include "surface/DatasourceControl.h"
#include "surface/LinkPainters.h"
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

bool TmvLinkControl::CalcPath(TmvLinkPath& path) const {
  if (!canvas_) return false;
  TmvQueryBuilderDataSourceControl* left = canvas_->BoxOf(link_->LeftDatasource());
  TmvQueryBuilderDataSourceControl* right = canvas_->BoxOf(link_->RightDatasource());
  if (!left || !right || left == right) return false;
  auto rect = [](const TmvRect& r) { return QRect(QPoint(r.Left, r.Top), QPoint(r.Right - 1, r.Bottom - 1)); };
  path = AlignLink(rect(left->CalcFieldRect(FieldNameOf(link_->LeftField()))),
                   rect(right->CalcFieldRect(FieldNameOf(link_->RightField()))));
  return true;
}

void TmvLinkControl::Paint(QPainter& canvas, const TmvQueryBuilderLinkPainter& painter, bool focused) const {
  TmvLinkPath path;
  if (CalcPath(path)) painter.PaintLink(canvas, path, focused, *link_);
}

}  // namespace mv
