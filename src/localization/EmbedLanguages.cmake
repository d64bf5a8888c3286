# Writes OUT, a C++ source holding the bytes of every .LNG file of DIR, the
# built-in languages of the library. Run at build time (cmake -P).
file(GLOB _files ${DIR}/*.LNG)
list(SORT _files)
set(_arrays "")
set(_table "")
set(_n 0)
foreach(_file ${_files})
  get_filename_component(_name ${_file} NAME)
  file(READ ${_file} _hex HEX)
  string(LENGTH "${_hex}" _len)
  math(EXPR _size "${_len} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," _bytes "${_hex}")
  string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n" _bytes "${_bytes}")
  string(APPEND _arrays "const unsigned char kLanguage${_n}[] = {\n${_bytes}0};\n")
  string(APPEND _table "      {\"${_name}\", kLanguage${_n}, ${_size}},\n")
  math(EXPR _n "${_n} + 1")
endforeach()
set(_text "// Generated from the .LNG files of src/localization/languages; do not edit.
#include \"localization/LanguageSources.h\"

namespace mv {
namespace {
${_arrays}}  // namespace

const std::vector<TmvBuiltinLanguageFile>& BuiltinLanguageFiles() {
  static const std::vector<TmvBuiltinLanguageFile> files = {
${_table}  };
  return files;
}

}  // namespace mv
")
if(EXISTS ${OUT})
  file(READ ${OUT} _old)
  if(_old STREQUAL _text)
    return()
  endif()
endif()
file(WRITE ${OUT} "${_text}")
