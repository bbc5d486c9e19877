#define ROWS_VERSION base
#include "colour/rows_impl.h"

namespace platform::rows {

const Version BASE = {"base", base::unpack, base::convert, base::map};

} // namespace platform::rows
