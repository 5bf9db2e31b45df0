"""scipy's peer of the cubic interpolation benchmark (bench_spline).

    scipy_interp.py DATA N

DATA holds, as raw native doubles, the N parameters, the N points (x, y, z
rows) and the two end derivatives (x, y, z each), the same arrays h0913
receives. make_interp_spline builds the cubic through the points with the
first derivatives prescribed at both ends (knots: the parameters, four-fold
at the ends). The call alone is timed, best of several repetitions; the
curve is then checked against a few of the points and both end derivatives.
Prints "seconds <best>" and "deviation <largest error>".
"""
import sys
import time

import numpy as np
from scipy.interpolate import make_interp_spline


def main():
    path, n = sys.argv[1], int(sys.argv[2])
    data = np.fromfile(path, dtype=np.float64)
    if data.size != 4 * n + 6:
        sys.exit(f"scipy_interp: {path} holds {data.size} doubles, expected {4 * n + 6}")
    x = data[:n]
    y = data[n:4 * n].reshape(n, 3)
    d0, d1 = data[4 * n:4 * n + 3], data[4 * n + 3:]
    bc = ([(1, d0)], [(1, d1)])

    # Best of at least three calls, more while the total stays under 0.5 s.
    best, total, reps = float("inf"), 0.0, 0
    while reps < 3 or (total < 0.5 and reps < 50):
        start = time.perf_counter()
        spline = make_interp_spline(x, y, k=3, bc_type=bc)
        elapsed = time.perf_counter() - start
        best, total, reps = min(best, elapsed), total + elapsed, reps + 1

    sample = np.unique(np.linspace(0, n - 1, 11).astype(int))
    deviation = np.abs(spline(x[sample]) - y[sample]).max()
    slope = spline.derivative()
    deviation = max(deviation, np.abs(slope(x[0]) - d0).max(), np.abs(slope(x[-1]) - d1).max())
    print(f"seconds {best!r}")
    print(f"deviation {deviation!r}")


if __name__ == "__main__":
    main()
