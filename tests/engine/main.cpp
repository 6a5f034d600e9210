#include "tst_engine.h"

#include "support/test_main.h"

TOLMARA_TEST_MAIN(UrlTest, MaskTest, StepTest, MessageTest, PropertyTest)
