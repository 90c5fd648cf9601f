// A library that can be loaded but is no HAL.
extern "C" __attribute__((visibility("default"))) int notAHal;
int notAHal = 0;
