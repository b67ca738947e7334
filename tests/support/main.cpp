#include <gmock/gmock.h>

#include "support/home.h"

int main(int argc, char** argv) {
  const ts5::test::OwnEnvironment environment;
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
