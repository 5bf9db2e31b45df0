/* A C host leaves a failing library call by longjmp: the library's frames
 * hold nothing that needs unwinding, so the session stays consistent and the
 * next call works. */
#include <setjmp.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

/* Sets the WCS display state to `value` at checking level 1 inside a trap.
 * Returns 1 when the call was left by longjmp, 0 when it returned; the
 * report is copied to *caught. */
int qx_c_set_display_trapped(int value, qxsys_report *caught)
{
    qxsys_trap trap;
    MACH__checking_level = 1;
    qxsys_trap_push(&trap);
    if (setjmp(trap.env) == 0) {
        WCS_set_wcs_display(value);
        qxsys_trap_pop(&trap);
        MACH__checking_level = 0;
        return 0;
    }
    *caught = trap.report;
    MACH__checking_level = 0;
    return 1;
}
