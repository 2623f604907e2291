// Stands for a library of which only the name is looked at.
extern "C" __attribute__((visibility("default"))) int korvaneTestToolkit();

int korvaneTestToolkit() { return 0; }
