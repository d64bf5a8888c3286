// The row macros of the option tables (*.def), expanded for one pass; no
// include guard: every table includes it first and OptionMacrosEnd.h last.
// The includer defines the pass:
//   MV_OPTIONS_MEMBERS  in the class body: fields, getters, setters
//   MV_OPTIONS_TABLE    in Properties(), with `T` the class: table entries
//   MV_OPTIONS_FORWARD  in TmvQueryBuilder: accessors passed to its
//                       properties object (rows of QueryBuilder.def)
//
// Rows:
//   MV_OPTION(Type, Name, Default, XMLKey)
//   MV_OPTION_RANGE(Type, Name, Default, XMLKey, Min, Max)   held in Min..Max
//   MV_OPTION_CORRECTED(Type, Name, Default, XMLKey, Correct)
//       the setter stores Correct(value), a static function of the class
//   MV_OPTION_OBJECT(Class, Name, XMLKey)   a nested option object; its
//       setter assigns, the object stays the same
//   MV_OPTION_PROXY(Type, Name, Default, XMLKey)   a value kept elsewhere:
//       the class defines the getter and setter by hand
//   MV_OPTION_BOUND(Type, Name, Default, XMLKey)   as PROXY, where the query
//       builder has an accessor of its own (not forwarded)
// XMLKey is the key in properties XML relative to the object (u"" for none);
// an object's ends in "/".

#if defined(MV_OPTIONS_MEMBERS)

#define MV_OPTION(Type, Name, Default, XMLKey)                                          \
 public:                                                                                \
  ::mv::TmvOptionArg<Type> Name() const { return Name##_; }                             \
  void Set##Name(::mv::TmvOptionArg<Type> value) { StoreOption(Name##_, Type(value)); } \
                                                                                        \
 protected:                                                                             \
  Type Name##_{};
#define MV_OPTION_RANGE(Type, Name, Default, XMLKey, Min, Max)                             \
 public:                                                                                   \
  Type Name() const { return Name##_; }                                                    \
  void Set##Name(Type value) { StoreOption(Name##_, ClampOption<Type>(value, Min, Max)); } \
                                                                                           \
 protected:                                                                                \
  Type Name##_{};
#define MV_OPTION_CORRECTED(Type, Name, Default, XMLKey, Correct)                                \
 public:                                                                                         \
  ::mv::TmvOptionArg<Type> Name() const { return Name##_; }                                      \
  void Set##Name(::mv::TmvOptionArg<Type> value) { StoreOption(Name##_, Type(Correct(value))); } \
                                                                                                 \
 protected:                                                                                      \
  Type Name##_{};
#define MV_OPTION_OBJECT(Class, Name, XMLKey)                    \
 public:                                                         \
  Class& Name() { return Name##_; }                              \
  const Class& Name() const { return Name##_; }                  \
  void Set##Name(const Class& value) { Name##_.Assign(&value); } \
                                                                 \
 protected:                                                      \
  Class Name##_;
#define MV_OPTION_PROXY(Type, Name, Default, XMLKey) \
 public:                                             \
  ::mv::TmvOptionArg<Type> Name() const;             \
  void Set##Name(::mv::TmvOptionArg<Type> value);
#define MV_OPTION_BOUND(Type, Name, Default, XMLKey) MV_OPTION_PROXY(Type, Name, Default, XMLKey)

#elif defined(MV_OPTIONS_TABLE)

#define MV_OPTION(Type, Name, Default, XMLKey) \
  ::mv::TmvOptionEntry<T, Type, &T::Name, &T::Set##Name, &T::Name##_>(u"" #Name, Default, XMLKey),
#define MV_OPTION_RANGE(Type, Name, Default, XMLKey, Min, Max) MV_OPTION(Type, Name, Default, XMLKey)
#define MV_OPTION_CORRECTED(Type, Name, Default, XMLKey, Correct) MV_OPTION(Type, Name, Default, XMLKey)
#define MV_OPTION_OBJECT(Class, Name, XMLKey) ::mv::TmvObjectProperty<&T::Name##_>(u"" #Name, XMLKey),
#define MV_OPTION_PROXY(Type, Name, Default, XMLKey) \
  ::mv::TmvOptionEntry<T, Type, &T::Name, &T::Set##Name, nullptr>(u"" #Name, Default, XMLKey),
#define MV_OPTION_BOUND(Type, Name, Default, XMLKey) MV_OPTION_PROXY(Type, Name, Default, XMLKey)

#elif defined(MV_OPTIONS_FORWARD)

#define MV_OPTION(Type, Name, Default, XMLKey)                          \
  ::mv::TmvOptionArg<Type> Name() const { return properties_->Name(); } \
  void Set##Name(::mv::TmvOptionArg<Type> value) { properties_->Set##Name(value); }
#define MV_OPTION_RANGE(Type, Name, Default, XMLKey, Min, Max) MV_OPTION(Type, Name, Default, XMLKey)
#define MV_OPTION_CORRECTED(Type, Name, Default, XMLKey, Correct) MV_OPTION(Type, Name, Default, XMLKey)
#define MV_OPTION_OBJECT(Class, Name, XMLKey)         \
  Class& Name() const { return properties_->Name(); } \
  void Set##Name(const Class& value) { properties_->Set##Name(value); }
#define MV_OPTION_PROXY(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#define MV_OPTION_BOUND(Type, Name, Default, XMLKey)

#else
#error "define MV_OPTIONS_MEMBERS, MV_OPTIONS_TABLE or MV_OPTIONS_FORWARD before including an option table"
#endif
