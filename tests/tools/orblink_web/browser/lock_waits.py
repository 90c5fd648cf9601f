"""lock_waits.py LIBRARY SECONDS: calls the library for a while, and prints how many calls it made
and how long the longest and the median one took, in milliseconds. Most of a call is the wait for the
lock."""

import ctypes
import sys
import time

library = ctypes.CDLL(sys.argv[1])
count = ctypes.c_uint8()
taken = []
end = time.monotonic() + float(sys.argv[2])
while time.monotonic() < end:
    begin = time.monotonic()
    if library.ORBLINK_GetNumOfSwitches(ctypes.byref(count)) != 0 or count.value != 1:
        sys.exit("ORBLINK_GetNumOfSwitches failed")
    taken.append(time.monotonic() - begin)
    time.sleep(0.002)
taken.sort()
print(len(taken), 1000 * taken[-1], 1000 * taken[len(taken) // 2])
