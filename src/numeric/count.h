// count.h — an int count or order from the C interface as a size: a value
// below 1 counts as 0, so that loops over it do nothing rather than wrap.
#ifndef QX_NUMERIC_COUNT_H
#define QX_NUMERIC_COUNT_H

#include <cstddef>

namespace qx::numeric
{

inline std::size_t count(int n) { return n > 0 ? static_cast<std::size_t>(n) : 0; }

} // namespace qx::numeric

#endif
