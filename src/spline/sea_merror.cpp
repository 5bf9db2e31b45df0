// sea_merror — the error state shared by the banded solver and the spline
// routines: one pending (number, level) pair, process-wide, with no stack
// and no lock. A push overwrites whatever is pending; only merrorflush
// clears it. Level 0 means that nothing is pending.
#define QX_SOURCE_FILE "sea_merror"
#include "frame/check.h"

#include <qxmath/solvers.h>

namespace
{

int pending_number = 0;
int pending_level = 0;

} // namespace

// The place is accepted for the callers' sake and not kept: nothing reads
// it back.
void merrorpush(const void *place, int number, int level)
{
    (void)place;
    pending_number = number;
    pending_level = level;
}

void merrorflush(void)
{
    pending_number = 0;
    pending_level = 0;
}

int merrornum(void) { return pending_number; }

int merrorlevel(void) { return pending_level; }
