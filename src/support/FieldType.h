// Generic data types of fields and parameters. The ordinals are fixed: they
// are written to metadata XML files as numbers, so never reorder or insert.
#pragma once

#include <cstdint>

namespace mv {

enum TFieldType : int32_t {
  ftUnknown = 0,
  ftString = 1,
  ftSmallint = 2,
  ftInteger = 3,
  ftWord = 4,
  ftBoolean = 5,
  ftFloat = 6,
  ftCurrency = 7,
  ftBCD = 8,
  ftDate = 9,
  ftTime = 10,
  ftDateTime = 11,
  ftBytes = 12,
  ftVarBytes = 13,
  ftAutoInc = 14,
  ftBlob = 15,
  ftMemo = 16,
  ftGraphic = 17,
  ftFmtMemo = 18,
  ftParadoxOle = 19,
  ftDBaseOle = 20,
  ftTypedBinary = 21,
  ftCursor = 22,
  ftFixedChar = 23,
  ftWideString = 24,
  ftLargeint = 25,
  ftADT = 26,
  ftArray = 27,
  ftReference = 28,
  ftDataSet = 29,
  ftOraBlob = 30,
  ftOraClob = 31,
  ftVariant = 32,
  ftInterface = 33,
  ftIDispatch = 34,
  ftGuid = 35,
};
constexpr int32_t kFieldTypeCount = 36;

// Direction of a stored procedure's or a statement's parameter. Ordinals are
// written to metadata XML.
enum TParamType : int32_t {
  ptUnknown = 0,
  ptInput = 1,
  ptOutput = 2,
  ptInputOutput = 3,
  ptResult = 4,
};

}  // namespace mv
