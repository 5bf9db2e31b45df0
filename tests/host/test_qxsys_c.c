/* test_qxsys_c.c — the C trap pattern of libqxsys, exercised from real C
 * with setjmp/longjmp. test_qxsys.cpp calls these functions and checks what
 * they observed. */
#include <setjmp.h>
#include <stddef.h>

#include <qxsys/qxsys.h>

int qxsys_c_catch_raise(int code, const char *message, qxsys_report *caught);
int qxsys_c_nested(qxsys_report *inner_caught, qxsys_report *outer_caught);

/* Raises inside a trap. Returns 1 when the trap caught the error (copied to
 * *caught) and was popped by it, 0 when the raise returned, -1 when the trap
 * stack was wrong afterwards. */
int qxsys_c_catch_raise(int code, const char *message, qxsys_report *caught)
{
    qxsys_trap *const outer = qxsys_current_trap();
    qxsys_trap trap;
    qxsys_trap_push(&trap);
    if (setjmp(trap.env) == 0) {
        if (qxsys_current_trap() != &trap) return -1;
        ERROR_raise("c_file.c", 42, code, message);
        qxsys_trap_pop(&trap);
        return 0;
    }
    *caught = trap.report;
    if (trap.active != 0 || qxsys_current_trap() != outer) return -1;
    return 1;
}

/* An inner trap catches the first error; the outer one, still active, the
 * second. Returns a bit set of the steps seen: 1 inner caught, 2 outer was
 * current after it, 4 outer caught, 8 no trap left afterwards; 16 marks a
 * step reached that should not be. */
int qxsys_c_nested(qxsys_report *inner_caught, qxsys_report *outer_caught)
{
    volatile int seen = 0;
    qxsys_trap outer;
    qxsys_trap_push(&outer);
    if (setjmp(outer.env) == 0) {
        qxsys_trap inner;
        qxsys_trap_push(&inner);
        if (setjmp(inner.env) == 0) {
            ERROR_internal("inner.c", 1, "first %d", 1);
            seen |= 16;
            qxsys_trap_pop(&inner);
        } else {
            seen |= 1;
            *inner_caught = inner.report;
            if (qxsys_current_trap() == &outer && outer.active) seen |= 2;
        }
        ERROR_internal("outer.c", 2, "second %s", "error");
        seen |= 16;
        qxsys_trap_pop(&outer);
    } else {
        seen |= 4;
        *outer_caught = outer.report;
    }
    if (qxsys_current_trap() == NULL) seen |= 8;
    return seen;
}
