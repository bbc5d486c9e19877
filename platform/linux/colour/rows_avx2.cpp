#define ROWS_VERSION avx2
#include "colour/rows_impl.h"

namespace platform::rows {

const Version AVX2 = {"avx2", avx2::unpack, avx2::convert, avx2::map};

} // namespace platform::rows
