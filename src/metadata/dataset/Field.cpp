#include "metadata/dataset/Field.h"

#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

// Runs a conversion of a field's value; a failure names the field.
template <class F>
auto Convert(const WideString& fieldName, F&& convert) -> decltype(convert()) {
  try {
    return convert();
  } catch (const EVariantError& e) {
    throw EConvertError(WideFormat(u"Field '%s': %s", {fieldName, e.Message()}));
  }
}

}  // namespace

bool IsBinaryFieldType(TFieldType type) {
  switch (type) {
    case ftBytes:
    case ftVarBytes:
    case ftBlob:
    case ftGraphic:
    case ftTypedBinary:
    case ftOraBlob: return true;
    default: return false;
  }
}

WideString BytesToWide(std::string_view bytes) {
  WideString text(bytes.size(), u'\0');
  for (size_t i = 0; i < bytes.size(); ++i) text[i] = static_cast<unsigned char>(bytes[i]);
  return text;
}

std::string WideToBytes(WideStringView text) {
  std::string bytes(text.size(), '\0');
  for (size_t i = 0; i < text.size(); ++i) bytes[i] = static_cast<char>(text[i] & 0xFF);
  return bytes;
}

std::string TmvField::AsString() const {
  if (IsNull()) return {};
  const WideString text = AsWideString();
  return IsBinary() && value_.IsString() ? WideToBytes(text) : UTF8Encode(text);
}

WideString TmvField::AsWideString() const {
  if (IsNull()) return {};
  return Convert(def_.Name, [&] { return value_.AsWideString(); });
}

int TmvField::AsInteger() const {
  if (IsNull()) return 0;
  return Convert(def_.Name, [&] { return value_.AsInteger(); });
}

int64_t TmvField::AsLargeInt() const {
  if (IsNull()) return 0;
  return Convert(def_.Name, [&] { return value_.AsInt64(); });
}

double TmvField::AsFloat() const {
  if (IsNull()) return 0;
  return Convert(def_.Name, [&] { return value_.AsFloat(); });
}

bool TmvField::AsBoolean() const {
  if (IsNull()) return false;
  return Convert(def_.Name, [&] { return value_.AsBoolean(); });
}

TmvVariant TmvField::AsVariant() const { return value_.IsEmpty() ? TmvVariant::Null() : value_; }

TmvField& TmvFields::operator[](int index) const {
  if (index < 0 || index >= Count())
    throw EmvQueryBuilderError(WideFormat(u"Field index out of range (%d)", {index}));
  return *items_[static_cast<size_t>(index)];
}

TmvField* TmvFields::FindField(WideStringView name) const {
  for (const auto& field : items_)
    if (WideSameText(field->FieldName(), name)) return field.get();
  return nullptr;
}

TmvField& TmvFields::FieldByName(WideStringView name) const {
  if (TmvField* field = FindField(name)) return *field;
  throw EmvQueryBuilderError(WideString(name), WideFormat(u"Field '%s' not found", {name}));
}

void TmvFields::Create(const TmvFieldDefs& defs) {
  items_.clear();
  items_.reserve(static_cast<size_t>(defs.Count()));
  for (int i = 0; i < defs.Count(); ++i) items_.push_back(std::make_unique<TmvField>(defs[i], i));
}

void TmvFields::ClearValues() {
  for (auto& field : items_) field->SetData(TmvVariant::Null());
}

}  // namespace mv
