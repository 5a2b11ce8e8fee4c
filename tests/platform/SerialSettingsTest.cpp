#include <gtest/gtest.h>

#include <string>

#include "platform/SerialControl.h"
#include "platform/SerialSettings.h"

namespace vorda::platform {
namespace {

TEST(SerialSettings, TakesTheTextApart) {
  const auto settings = ParseSerialSettings("19200,E,7,2");
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->baud, 19200);
  EXPECT_EQ(settings->parity, 'E');
  EXPECT_EQ(settings->dataBits, 7);
  EXPECT_TRUE(settings->longStop);
}

TEST(SerialSettings, TakesParityInEitherCase) {
  for (const char* text : {"9600,n,8,1", "9600,e,8,1", "9600,o,8,1", "9600,m,8,1", "9600,s,8,1", "9600,N,8,1",
                           "9600,E,8,1", "9600,O,8,1", "9600,M,8,1", "9600,S,8,1"})
    EXPECT_TRUE(ValidSerialSettings(text)) << text;
  EXPECT_EQ(ParseSerialSettings("9600,o,8,1")->parity, 'O');
}

TEST(SerialSettings, TakesEverySpeedAPortCanHave) {
  for (const char* baud : {"110", "300", "600", "1200", "2400", "4800", "9600", "14400", "19200", "28800",
                           "38400", "56000", "57600", "115200", "128000", "256000"})
    EXPECT_TRUE(ValidSerialSettings(std::string(baud) + ",n,8,1")) << baud;
}

TEST(SerialSettings, RefusesAnyOtherSpeed) {
  for (const char* baud : {"", "0", "75", "1000", "9601", "09600", "+9600", "9600.0", "230400", "-9600", "x"})
    EXPECT_FALSE(ValidSerialSettings(std::string(baud) + ",n,8,1")) << baud;
}

TEST(SerialSettings, RefusesAParityThatIsNone) {
  for (const char* text : {"9600,X,8,1", "9600,,8,1", "9600,nn,8,1", "9600,1,8,1", "9600, n,8,1"})
    EXPECT_FALSE(ValidSerialSettings(text)) << text;
}

TEST(SerialSettings, TakesFourToEightDataBits) {
  for (const char* bits : {"4", "5", "6", "7", "8"})
    EXPECT_TRUE(ValidSerialSettings(std::string("9600,n,") + bits + ",1")) << bits;
  for (const char* bits : {"", "3", "9", "08", "7.5", "x"})
    EXPECT_FALSE(ValidSerialSettings(std::string("9600,n,") + bits + ",1")) << bits;
}

TEST(SerialSettings, TakesOneOneAndAHalfOrTwoStopBits) {
  for (const char* bits : {"1", "1.5", "2"})
    EXPECT_TRUE(ValidSerialSettings(std::string("9600,n,8,") + bits)) << bits;
  for (const char* bits : {"", "0", "3", "1.0", "2 ", "1,"})
    EXPECT_FALSE(ValidSerialSettings(std::string("9600,n,8,") + bits)) << bits;
  EXPECT_FALSE(ParseSerialSettings("9600,n,8,1")->longStop);
  EXPECT_TRUE(ParseSerialSettings("9600,n,5,1.5")->longStop);
}

TEST(SerialSettings, RefusesATextOfTooFewOrTooManyFields) {
  for (const char* text :
       {"", "9600", "9600,n", "9600,n,8", "9600,n,8,1,", "9600,n,8,1,1", ",,,", "9600;n;8;1"})
    EXPECT_FALSE(ValidSerialSettings(text)) << text;
}

}  // namespace
}  // namespace vorda::platform
