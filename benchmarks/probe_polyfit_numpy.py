"""numpy's polyfit on the same inputs as probe_regression_bench, for its comparison in the same run.

digits DATA_DIR NAME...      fewest correct significant digits of each reference problem's coefficients
time FILE DEGREE REPEATS     fastest polyfit of the float64 (x, y) pairs stored in FILE: wall and CPU seconds
"""
import math
import sys
import time
import warnings

import numpy as np


def read_problem(path):
    certified, samples, data = [], [], False
    for line in open(path):
        fields = line.split()
        if data:
            if len(fields) >= 2:
                samples.append((float(fields[1]), float(fields[0])))
            continue
        if fields and len(fields[0]) > 1 and fields[0][0] == "B" and fields[0][1:].isdigit():
            certified.append(float(fields[1]))
        elif fields and fields[0] == "Data:" and " y " in line:
            data = True
    return certified, np.array(samples)


def digits(estimate, certified):
    error = abs(estimate - certified) / abs(certified) if certified != 0 else abs(estimate)
    return 15.0 if error == 0 else min(15.0, max(0.0, -math.log10(error)))


def main():
    warnings.simplefilter("ignore")  # polyfit warns on the hard problems; the digits say how it fared
    if sys.argv[1] == "digits":
        for name in sys.argv[3:]:
            certified, samples = read_problem("%s/%s.dat" % (sys.argv[2], name))
            fit = np.polyfit(samples[:, 0], samples[:, 1], len(certified) - 1)[::-1]
            print(name, "%.2f" % min(digits(e, c) for e, c in zip(fit, certified)))
    elif sys.argv[1] == "time":
        pairs = np.fromfile(sys.argv[2], dtype=np.float64).reshape(-1, 2)
        x, y = pairs[:, 0].copy(), pairs[:, 1].copy()
        runs = [timed(x, y, int(sys.argv[3])) for _ in range(int(sys.argv[4]))]
        print("%.9f %.9f" % (min(r[0] for r in runs), min(r[1] for r in runs)))


def timed(x, y, degree):
    wall, cpu = time.perf_counter(), time.process_time()
    np.polyfit(x, y, degree)
    return time.perf_counter() - wall, time.process_time() - cpu


if __name__ == "__main__":
    main()
