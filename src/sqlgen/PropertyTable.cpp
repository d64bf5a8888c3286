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
    case ptColor: return u"colour";
    case ptSet: return Enum ? u"set of " + WideString(Enum->Name) : WideString(u"set");
    case ptString: return u"string";
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
  return EntryText(*r.entry, *r.object);
}

void TmvPropertyTable::SetText(TmvPersistent& object, WideStringView path, WideStringView value) const {
  Resolved r = Resolve(object, path);
  if (r.entry->Type == ptString) {
    r.entry->SetString(*r.object, value);
    return;
  }
  int64_t parsed;
  try {
    parsed = ParseValue(*r.entry, value);
  } catch (const EConvertError& e) {
    // Name the property by the path the caller gave.
    throw EConvertError(WideFormat(u"Property \"%s\": %s", {WideString(path), e.Message()}));
  }
  r.entry->Set(*r.object, parsed);
}

WideString TmvPropertyTable::EntryText(const TmvPropertyEntry& entry, const TmvPersistent& object) {
  if (entry.Type == ptString) return entry.GetString(object);
  return ValueText(entry, entry.Get(object));
}

void TmvPropertyTable::SetEntryText(const TmvPropertyEntry& entry, TmvPersistent& object, WideStringView text) {
  if (entry.Type == ptString) {
    entry.SetString(object, text);
    return;
  }
  int64_t parsed;
  try {
    parsed = ParseValue(entry, text);
  } catch (const EConvertError& e) {
    throw EConvertError(WideFormat(u"Property \"%s\": %s", {WideString(entry.Name), e.Message()}));
  }
  entry.Set(object, parsed);
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
    if (entry.Type == ptString) {
      if (entry.StoreString)
        entry.StoreString(object, entry.DefaultText);
      else
        entry.SetString(object, entry.DefaultText);
      continue;
    }
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
    else if (entry.Type == ptString)
      entry.SetString(dest, entry.GetString(source));
    else
      entry.Set(dest, entry.Get(source));
  }
}

void TmvPropertyTable::Describe(const TmvPersistent& object, TmvPropertyWriter& writer) const {
  if (parent_) parent_->Describe(object, writer);
  for (const TmvPropertyEntry& entry : entries_) {
    if (entry.Type == ptObject)
      writer.WriteObject(entry.Name, entry.Object(object));
    else if (entry.Type == ptString)
      writer.WriteText(entry.Name, entry.GetString(object));
    else
      writer.WriteRaw(entry.Name, ValueText(entry, entry.Get(object)));
  }
}

WideString TmvPropertyTable::ValueText(const TmvPropertyEntry& entry, int64_t value) {
  switch (entry.Type) {
    case ptBoolean: return value ? u"True" : u"False";
    case ptInteger: return IntToWide(value);
    case ptEnumeration: return entry.Enum->NameOf(value);
    case ptColor: {
      static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
      WideString text(9, u'$');
      for (int i = 8; i >= 1; --i, value >>= 4) text[size_t(i)] = kDigits[value & 15];
      return text;
    }
    case ptSet: {
      WideString text = u"[";
      for (size_t i = 0; i < entry.Enum->Members.size(); ++i) {
        if (!(value & (int64_t(1) << i))) continue;
        if (text.size() > 1) text += u", ";
        text += entry.Enum->Members[i];
      }
      return text + u"]";
    }
    case ptObject:
    case ptString: break;
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
    case ptColor: {
      // "$80000005", "0x80000005", or a decimal number, signed or not.
      WideStringView digits = trimmed;
      int base = 10;
      if (!digits.empty() && digits[0] == u'$') {
        digits.remove_prefix(1);
        base = 16;
      } else if (digits.size() > 2 && digits[0] == u'0' && (digits[1] == u'x' || digits[1] == u'X')) {
        digits.remove_prefix(2);
        base = 16;
      }
      if (base == 16) {
        uint64_t bits = 0;
        bool ok = !digits.empty() && digits.size() <= 8;
        for (char16_t c : digits) {
          const int digit = c >= u'0' && c <= u'9'   ? c - u'0'
                            : c >= u'a' && c <= u'f' ? c - u'a' + 10
                            : c >= u'A' && c <= u'F' ? c - u'A' + 10
                                                     : -1;
          if (digit < 0) ok = false;
          bits = bits * 16 + uint64_t(digit < 0 ? 0 : digit);
        }
        if (ok) return int64_t(bits);
      } else if (TryStrToInt(trimmed, number) && number >= std::numeric_limits<int32_t>::min() &&
                 number <= int64_t(std::numeric_limits<uint32_t>::max())) {
        return int64_t(uint32_t(number));
      }
      throw EConvertError(WideFormat(u"\"%s\" is not a colour; give $BBGGRR in hex or a 32-bit number",
                                     {WideString(text)}));
    }
    case ptSet: {
      // "[a, b]" or "a,b"; each member by name or ordinal.
      WideStringView body = trimmed;
      if (!body.empty() && body.front() == u'[' && body.back() == u']') body = body.substr(1, body.size() - 2);
      int64_t bits = 0;
      const TmvEnumType& type = *entry.Enum;
      while (!WideTrim(body).empty()) {
        const size_t comma = body.find(u',');
        const WideString member = WideTrim(body.substr(0, comma));
        body = comma == WideStringView::npos ? WideStringView() : body.substr(comma + 1);
        int64_t ordinal = type.Find(member);
        if (ordinal < 0 && !(TryStrToInt(member, ordinal) && ordinal >= 0 && ordinal < int64_t(type.Members.size())))
          throw EConvertError(WideFormat(u"\"%s\" is not a member of %s", {member, WideString(type.Name)}));
        bits |= int64_t(1) << ordinal;
      }
      return bits;
    }
    case ptObject: break;
    case ptString: return 0;  // strings go through SetString
  }
  throw EConvertError(WideFormat(u"Property \"%s\" is an object and takes no value", {WideString(entry.Name)}));
}

}  // namespace mv
