#include "sqlgen/PropertyTable.h"

#include <limits>

#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

// --- TmvEnumType ---

WideString TmvEnumType::NameOf(int64_t ordinal) const {
  if (ordinal < 0 || ordinal >= int64_t(Members.size())) return IntToWide(ordinal);
  return Members[size_t(ordinal)];
}

int64_t TmvEnumType::Find(WideStringView name) const {
  for (size_t i = 0; i < Members.size(); ++i)
    if (WideSameText(Members[i], name)) return int64_t(i);
  return -1;
}

// --- TmvPropertyEntry ---

WideString TmvPropertyEntry::TypeName() const {
  switch (Type) {
    case ptBoolean: return u"boolean";
    case ptInteger: return u"integer";
    case ptEnumeration: return Enum ? WideString(Enum->Name) : WideString(u"enumeration");
    case ptObject: return ObjectTable ? WideFromAscii(ObjectTable().ClassName()) : WideString(u"object");
  }
  return {};
}

// --- TmvPropertyTable ---

TmvPropertyTable::TmvPropertyTable(const char* className, std::vector<TmvPropertyEntry> entries,
                                   const TmvPropertyTable* parent)
    : className_(className), entries_(std::move(entries)), parent_(parent) {}

const TmvPropertyEntry* TmvPropertyTable::Find(WideStringView name) const {
  for (const TmvPropertyEntry& entry : entries_)
    if (WideSameText(entry.Name, name)) return &entry;
  return parent_ ? parent_->Find(name) : nullptr;
}

namespace {

WideString JoinPath(const WideString& prefix, WideStringView name) {
  return prefix.empty() ? WideString(name) : prefix + u"." + WideString(name);
}

// Splits "a.b.c" into its names; empty names stay, so that they can be refused.
std::vector<WideStringView> SplitPath(WideStringView path) {
  std::vector<WideStringView> names;
  size_t start = 0;
  for (;;) {
    size_t dot = path.find(u'.', start);
    if (dot == WideStringView::npos) {
      names.push_back(path.substr(start));
      return names;
    }
    names.push_back(path.substr(start, dot - start));
    start = dot + 1;
  }
}

}  // namespace

std::vector<TmvPropertyLeaf> TmvPropertyTable::Leaves() const {
  std::vector<TmvPropertyLeaf> leaves;
  CollectLeaves(leaves, {}, {}, true, {});
  return leaves;
}

void TmvPropertyTable::CollectLeaves(std::vector<TmvPropertyLeaf>& leaves, const WideString& prefix,
                                     const WideString& xmlPrefix, bool xmlKnown,
                                     const std::vector<std::pair<WideString, int64_t>>& overrides) const {
  if (parent_) parent_->CollectLeaves(leaves, prefix, xmlPrefix, xmlKnown, overrides);
  for (const TmvPropertyEntry& entry : entries_) {
    const WideString path = JoinPath(prefix, entry.Name);
    const bool hasKey = xmlKnown && entry.XMLPath[0] != u'\0';
    const WideString xmlPath = hasKey ? xmlPrefix + entry.XMLPath : WideString();
    if (entry.Type != ptObject) {
      int64_t value = entry.Default;
      for (const auto& [overridePath, overrideValue] : overrides)
        if (WideSameText(overridePath, path)) value = overrideValue;
      leaves.push_back({path, xmlPath, &entry, value});
      continue;
    }
    // Overrides are relative to the object that declares them; make them
    // relative to the root of this walk, keeping those from above.
    std::vector<std::pair<WideString, int64_t>> nested = overrides;
    for (const TmvDefaultOverride& o : entry.DefaultOverrides) nested.emplace_back(JoinPath(path, o.Path), o.Value);
    entry.ObjectTable().CollectLeaves(leaves, path, xmlPath, hasKey, nested);
  }
}

TmvPropertyTable::Resolved TmvPropertyTable::Resolve(const TmvPersistent& object, WideStringView path) const {
  TmvPersistent* current = const_cast<TmvPersistent*>(&object);
  const TmvPropertyTable* table = this;
  const std::vector<WideStringView> names = SplitPath(path);
  for (size_t i = 0; i < names.size(); ++i) {
    const WideStringView name = names[i];
    if (name.empty())
      throw EmvQueryBuilderError(WideString(path),
                                 WideFormat(u"Property name \"%s\" has an empty part", {WideString(path)}));
    const TmvPropertyEntry* entry = table->Find(name);
    if (!entry)
      throw EmvQueryBuilderError(WideString(path),
                                 WideFormat(u"Unknown property \"%s\": %s has no property \"%s\"",
                                            {WideString(path), WideFromAscii(table->ClassName()), WideString(name)}));
    const bool last = i + 1 == names.size();
    if (entry->Type == ptObject) {
      if (last)
        throw EmvQueryBuilderError(
            WideString(path), WideFormat(u"Property \"%s\" is an object of class %s; name one of its properties",
                                         {WideString(path), entry->TypeName()}));
      current = entry->Object(*current);
      table = &entry->ObjectTable();
      continue;
    }
    if (!last)
      throw EmvQueryBuilderError(WideString(path),
                                 WideFormat(u"Unknown property \"%s\": %s is of type %s and has no properties",
                                            {WideString(path), WideString(entry->Name), entry->TypeName()}));
    return {current, table, entry};
  }
  return {current, table, nullptr};  // not reached: SplitPath gives at least one name
}

WideString TmvPropertyTable::GetText(const TmvPersistent& object, WideStringView path) const {
  Resolved r = Resolve(object, path);
  return ValueText(*r.entry, r.entry->Get(*r.object));
}

void TmvPropertyTable::SetText(TmvPersistent& object, WideStringView path, WideStringView value) const {
  Resolved r = Resolve(object, path);
  int64_t parsed;
  try {
    parsed = ParseValue(*r.entry, value);
  } catch (const EConvertError& e) {
    // Name the property by the path the caller gave.
    throw EConvertError(WideFormat(u"Property \"%s\": %s", {WideString(path), e.Message()}));
  }
  r.entry->Set(*r.object, parsed);
}

void TmvPropertyTable::SetAssignment(TmvPersistent& object, WideStringView assignment) const {
  const size_t equals = assignment.find(u'=');
  if (equals == WideStringView::npos)
    throw EmvQueryBuilderError(WideString(assignment),
                               WideFormat(u"\"%s\" gives no value; write NAME=VALUE", {WideString(assignment)}));
  SetText(object, WideTrim(assignment.substr(0, equals)), WideTrim(assignment.substr(equals + 1)));
}

void TmvPropertyTable::StoreDefaults(TmvPersistent& object) const {
  for (const TmvPropertyEntry& entry : entries_) {
    if (entry.Type != ptObject) {
      if (entry.Store)
        entry.Store(object, entry.Default);
      else
        entry.Set(object, entry.Default);
      continue;
    }
    TmvPersistent* nested = entry.Object(object);
    for (const TmvDefaultOverride& o : entry.DefaultOverrides) {
      Resolved r = entry.ObjectTable().Resolve(*nested, o.Path);
      if (r.entry->Store)
        r.entry->Store(*r.object, o.Value);
      else
        r.entry->Set(*r.object, o.Value);
    }
  }
}

void TmvPropertyTable::AssignValues(TmvPersistent& dest, const TmvPersistent& source) const {
  for (const TmvPropertyEntry& entry : entries_) {
    if (entry.Type == ptObject)
      entry.Object(dest)->Assign(entry.Object(source));
    else
      entry.Set(dest, entry.Get(source));
  }
}

void TmvPropertyTable::Describe(const TmvPersistent& object, TmvPropertyWriter& writer) const {
  if (parent_) parent_->Describe(object, writer);
  for (const TmvPropertyEntry& entry : entries_) {
    if (entry.Type == ptObject)
      writer.WriteObject(entry.Name, entry.Object(object));
    else
      writer.WriteRaw(entry.Name, ValueText(entry, entry.Get(object)));
  }
}

WideString TmvPropertyTable::ValueText(const TmvPropertyEntry& entry, int64_t value) {
  switch (entry.Type) {
    case ptBoolean: return value ? u"True" : u"False";
    case ptInteger: return IntToWide(value);
    case ptEnumeration: return entry.Enum->NameOf(value);
    case ptObject: break;
  }
  return {};
}

int64_t TmvPropertyTable::ParseValue(const TmvPropertyEntry& entry, WideStringView text) {
  const WideString trimmed = WideTrim(text);
  int64_t number = 0;
  switch (entry.Type) {
    case ptBoolean:
      if (WideSameText(trimmed, u"True") || trimmed == u"1") return 1;
      if (WideSameText(trimmed, u"False") || trimmed == u"0") return 0;
      throw EConvertError(WideFormat(u"\"%s\" is not a boolean; give True or False", {WideString(text)}));
    case ptInteger:
      if (!TryStrToInt(trimmed, number) || number < std::numeric_limits<int32_t>::min() ||
          number > std::numeric_limits<int32_t>::max())
        throw EConvertError(WideFormat(u"\"%s\" is not an integer", {WideString(text)}));
      return number;
    case ptEnumeration: {
      const TmvEnumType& type = *entry.Enum;
      const int64_t found = type.Find(trimmed);
      if (found >= 0) return found;
      // An ordinal, as stored option files may give it.
      if (TryStrToInt(trimmed, number) && number >= 0 && number < int64_t(type.Members.size())) return number;
      WideString members;
      for (const char16_t* member : type.Members) {
        if (!members.empty()) members += u", ";
        members += member;
      }
      throw EConvertError(WideFormat(u"\"%s\" is not a value of %s; give one of %s",
                                     {WideString(text), WideString(type.Name), members}));
    }
    case ptObject: break;
  }
  throw EConvertError(WideFormat(u"Property \"%s\" is an object and takes no value", {WideString(entry.Name)}));
}

}  // namespace mv
