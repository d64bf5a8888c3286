#include "support/Persistent.h"

#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

// Objects that refer to each other must not make the dump endless.
constexpr int kMaxDescribeDepth = 16;

WideString Quoted(WideStringView text) {
  WideString out = u"'";
  for (char16_t c : text) {
    if (c == u'\'') out += u'\'';
    out += c;
  }
  return out + u"'";
}

}  // namespace

MV_DEFINE_CLASS(TmvPersistent, TmvObject)

void TmvPersistent::Assign(const TmvPersistent* source) {
  if (source) {
    source->AssignTo(this);
  } else {
    AssignError(nullptr);
  }
}

void TmvPersistent::AssignTo(TmvPersistent* dest) const { dest->AssignError(this); }

void TmvPersistent::AssignError(const TmvPersistent* source) const {
  const WideString sourceName = source ? WideFromAscii(source->ClassName()) : WideString(u"nil");
  throw EConvertError(WideFormat(u"Cannot assign a %s to a %s", {sourceName, WideFromAscii(ClassName())}));
}

void TmvPersistent::DescribeProperties(TmvPropertyWriter&) const {}

void TmvPropertyWriter::WriteText(WideStringView name, WideStringView value) { WriteRaw(name, Quoted(value)); }

void TmvPropertyWriter::WriteInteger(WideStringView name, int64_t value) { WriteRaw(name, IntToWide(value)); }

void TmvPropertyWriter::WriteBoolean(WideStringView name, bool value) {
  WriteRaw(name, value ? u"True" : u"False");
}

void TmvPropertyWriter::WriteRaw(WideStringView name, WideStringView value) {
  lines_.push_back(Indent() + WideString(name) + u" = " + WideString(value));
}

void TmvPropertyWriter::WriteObject(WideStringView name, const TmvPersistent* object) {
  if (!object) {
    WriteRaw(name, u"nil");
    return;
  }
  if (depth_ >= kMaxDescribeDepth) {
    WriteRaw(name, u"(nested too deep)");
    return;
  }
  lines_.push_back(Indent() + u"object " + WideString(name) + u": " + WideFromAscii(object->ClassName()));
  WriteBody(*object);
}

void TmvPropertyWriter::WriteBody(const TmvPersistent& object) {
  ++depth_;
  object.DescribeProperties(*this);
  --depth_;
  lines_.push_back(Indent() + u"end");
}

std::vector<WideString> TmvPropertyWriter::Describe(const TmvPersistent& object) {
  TmvPropertyWriter writer;
  writer.lines_.push_back(u"object " + WideFromAscii(object.ClassName()));
  writer.WriteBody(object);
  return std::move(writer.lines_);
}

}  // namespace mv
