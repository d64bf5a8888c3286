#include "metadata/fetchers/FieldsFetcher.h"

#include "frontend/SQLContext.h"
#include "metadata/MetadataField.h"
#include "support/Exceptions.h"

namespace mv {

// --- TmvBaseMetadataFieldsFetcher ---

void TmvBaseMetadataFieldsFetcher::LoadFields(TmvMetadataFieldsList* list) {
  if (!list) return;
  InitIterations();
  WalkThenEnd(
      [&] {
        TmvUpdateBatch batch(*list);
        FirstIteration();
        TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(SQLContext());
        for (; !IsEndOfIterations(); NextIteration()) {
          name->Clear();
          CalcFieldName(*name);
          if (IsQualifiedNameEmpty(name.get())) continue;
          const int index = list->FindFieldByName(name.get());
          TmvMetadataField* field = index >= 0 ? list->Items(index) : list->Add();
          TmvUpdateBatch fieldBatch(*field);
          if (index < 0) field->SetName(name.get());
          if (field->ShortDescription().empty() && CanCalcShortDescription())
            field->SetShortDescription(CalcShortDescription());
          if (field->LongDescription().empty() && CanCalcLongDescription())
            field->SetLongDescription(CalcLongDescription());
          if (CanCalcTypeOnServer()) {
            const WideString type = CalcTypeOnServer();
            field->SetFieldTypeName(WideTrim(WideStringView(type).substr(0, type.find(u'('))));
          }
          if (CanCalcSize()) field->SetSize(CalcSize());
          if (CanCalcPrecision()) field->SetPrecision(CalcPrecision());
          if (CanCalcScale()) field->SetScale(CalcScale());
          if (CanCalcPrimaryKey()) field->SetPrimaryKey(CalcIsPrimaryKey());
          if (CanCalcIsNullable()) field->SetNullable(CalcIsNullable());
          if (CanCalcIsReadOnly()) field->SetReadOnly(CalcIsReadOnly());
        }
      },
      [&] { EndIterations(); });
}

// --- Variants ---

namespace {

bool CalcFlag(const TmvVariant& value, const TmvVariant& trueValue, const TmvVariant& falseValue, bool fallback) {
  if (value.IsClear()) return fallback;
  if (value.VarType() == TmvVarType::vtBoolean) return value.AsBoolean();
  if (!trueValue.IsEmpty()) return IsValueLikeVariant(value, trueValue);
  if (!falseValue.IsEmpty()) return !IsValueLikeVariant(value, falseValue);
  try {
    return value.AsBoolean();
  } catch (const Exception&) {
    return fallback;
  }
}

}  // namespace

bool TmvBaseMetadataFieldsFetcherVariants::CalcIsPrimaryKey() {
  return CalcFlag(GetPrimary(), PrimaryTrueValue, PrimaryFalseValue, TmvBaseMetadataFieldsFetcher::CalcIsPrimaryKey());
}

bool TmvBaseMetadataFieldsFetcherVariants::CalcIsNullable() {
  return CalcFlag(GetNullable(), NullableTrueValue, NullableFalseValue,
                  TmvBaseMetadataFieldsFetcher::CalcIsNullable());
}

bool TmvBaseMetadataFieldsFetcherVariants::CalcIsReadOnly() {
  return CalcFlag(GetReadOnly(), ReadOnlyTrueValue, ReadOnlyFalseValue,
                  TmvBaseMetadataFieldsFetcher::CalcIsReadOnly());
}

// --- TmvMetadataFieldsFetcherFromDataset ---

void TmvMetadataFieldsFetcherFromDataset::CalcFieldName(TSQLQualifiedName& name) {
  SetCatalogName(name, TrimName(RequireCatalogColumn(dataset_, NameFieldName).AsWideString()));
}

WideString TmvMetadataFieldsFetcherFromDataset::CalcTypeOnServer() { return CatalogText(Column(TypeFieldName)); }

WideString TmvMetadataFieldsFetcherFromDataset::CalcDefaultValue() {
  return CatalogText(Column(DefaultValueFieldName));
}

WideString TmvMetadataFieldsFetcherFromDataset::CalcShortDescription() {
  return CatalogText(Column(ShortDescriptionFieldName));
}

WideString TmvMetadataFieldsFetcherFromDataset::CalcLongDescription() {
  return CatalogText(Column(LongDescriptionFieldName));
}

int TmvMetadataFieldsFetcherFromDataset::IntegerValue(WideStringView columnName) const {
  const TmvField* column = Column(columnName);
  if (!column || column->IsNull() || WideTrim(column->AsWideString()).empty()) return 0;
  return column->AsInteger();
}

}  // namespace mv
