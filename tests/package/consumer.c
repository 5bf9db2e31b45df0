/* Opens a session through the installed library and reference host. */
#include <stdio.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

int main(void)
{
    const int mode = 0;
    sys10_(&mode);
    acom_.model_scale = 2.0;
    sys21_();
    printf("length tolerance %g\n", EQ_ask_length_tolerance());
    return EQ_ask_length_tolerance() == 2.0e-4 ? 0 : 1;
}
