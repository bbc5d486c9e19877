/** What the cases of this folder have in common: a set for each test. */
#pragma once

#include <gmock/gmock.h>

#include "set_under_test.h"

class SeamTest : public testing::Test {
  protected:
    void SetUp() override { set_under_test::begin(); }
    void TearDown() override { set_under_test::end(); }
};
