#include "support/test_main.h"

int main(int argc, char **argv) { return runRegisteredTests(argc, argv); }
