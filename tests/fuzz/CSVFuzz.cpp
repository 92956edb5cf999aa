#include <qx/symbolic_regression/DataSet.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>

// The first byte says how the rest is written: separator, decimal point, header, missing cells.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  if (Size == 0) {
    return 0;
  }
  constexpr char Separators[] = {0, ',', ';', ' '};
  qx::TCSVFormat Format;
  Format.Separator = Separators[Data[0] & 3];
  Format.DecimalPoint = (Data[0] & 4) != 0 ? ',' : '.';
  Format.Header = (Data[0] & 8) == 0;
  Format.Thousands = (Data[0] & 128) != 0;
  Format.MissingValues = static_cast<qx::TMissingValues>(((Data[0] >> 4) & 7) % 3);
  std::istringstream Stream(std::string(Data + 1, Data + Size));
  try {
    const qx::TQXDataSet Table = qx::TQXDataSet::FromCSV(Stream, Format);
    for (int Column = 0; Column < Table.ColumnCount(); ++Column) {
      for (const double Value : Table.Column(Column)) {
        if (std::isnan(Value) && Format.MissingValues != qx::mvKeep) {
          std::abort();
        }
      }
    }
  } catch (const qx::EDataError& Error) {
    const std::string Message = Error.what();
    if (Error.Line() < 1 || Message.find('\n') != std::string::npos || Message.empty()) {
      std::abort();
    }
  }
  return 0;
}
