#include <gtest/gtest.h>

#include "platform/Win32.h"

TEST(ResultCode, Win32ErrorsMapIntoFacility7AndSuccessStaysUnchanged) {
  EXPECT_EQ(static_cast<uint32_t>(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)), 0x80070002u);
  EXPECT_EQ(static_cast<uint32_t>(HRESULT_FROM_WIN32(5035)), 0x800713ABu);
  EXPECT_EQ(static_cast<uint32_t>(HRESULT_FROM_WIN32(0x12345)), 0x80072345u);
  EXPECT_EQ(HRESULT_FROM_WIN32(0), S_OK);
}
