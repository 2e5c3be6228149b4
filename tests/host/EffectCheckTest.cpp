#include "host/effects/EffectCheck.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

namespace qmx::host
{
namespace
{
std::size_t BytesOf(const tagTxEffectParam& param)
{
    return std::size_t{param.nWidth} * param.nHeight * 4;
}

/// A cut in the middle: keeps every rule.
void Cut(const tagTxEffectParam& param)
{
    std::memcpy(param.pOutput, param.fProgress >= 0.5F ? param.pTo : param.pFrom, BytesOf(param));
}

/// What the check finds in an effect that does @p harm after a cut.
std::vector<std::string> FaultsOf(const std::function<void(const tagTxEffectParam&)>& harm)
{
    return EffectCheck(
               [&](const tagTxEffectParam& param)
               {
                   Cut(param);
                   harm(param);
               })
        .Faults(3);
}

std::string OnlyFault(const std::vector<std::string>& faults)
{
    return faults.size() == 1 ? faults[0] : std::to_string(faults.size()) + " faults";
}

TEST(EffectCheck, FindsNothingInACut)
{
    EXPECT_EQ(FaultsOf([](const tagTxEffectParam&) {}), std::vector<std::string>());
}

TEST(EffectCheck, HandsTheTypeOver)
{
    FaultsOf([](const tagTxEffectParam& param) { EXPECT_EQ(param.nEffectType, 3U); });
}

TEST(EffectCheck, FindsEndsThatAreNotThePictures)
{
    const auto faults = FaultsOf(
        [](const tagTxEffectParam& param)
        {
            if (param.fProgress == 0 || param.fProgress == 1)
                param.pOutput[0] = static_cast<std::uint8_t>(param.pOutput[0] + 1);
        });
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_EQ(faults[0], "does not begin with the from picture (1 x 1, progress 0)");
    EXPECT_EQ(faults[1], "does not end with the to picture (1 x 1, progress 1)");
}

TEST(EffectCheck, FindsPixelsThatAreNotWritten)
{
    const EffectCheck check(
        [](const tagTxEffectParam& param)
        {
            if (param.nWidth != 17 || param.fProgress != 0.25F)
                Cut(param);
        });
    EXPECT_EQ(OnlyFault(check.Faults(0)),
              "leaves pixels unwritten, or gives another picture each time (17 x 9, progress 0.25)");
}

TEST(EffectCheck, FindsWritingBesideTheOutput)
{
    EXPECT_EQ(OnlyFault(FaultsOf(
                  [](const tagTxEffectParam& param)
                  {
                      if (param.fProgress == 0.75F)
                          param.pOutput[BytesOf(param)] = 0;
                  })),
              "writes beside the output (1 x 1, progress 0.75)");
    EXPECT_EQ(OnlyFault(FaultsOf(
                  [](const tagTxEffectParam& param)
                  {
                      if (param.fProgress == 2)
                          *(param.pOutput - 1) = 0;
                  })),
              "writes beside the output (1 x 1, progress 2)");
}

TEST(EffectCheck, FindsWritingIntoWhatGoesIn)
{
    EXPECT_EQ(OnlyFault(FaultsOf(
                  [](const tagTxEffectParam& param)
                  {
                      if (param.fProgress == 0.5F)
                          const_cast<std::uint8_t*>(param.pFrom)[0] ^= 1;
                  })),
              "writes into a picture that goes in (1 x 1, progress 0.5)");
}

TEST(EffectCheck, FindsStateThatCallsShare)
{
    std::atomic<std::uint8_t> calls{0};
    const auto faults = FaultsOf(
        [&](const tagTxEffectParam& param)
        {
            if (param.fProgress == 0.4F)
                param.pOutput[0] = ++calls;
        });
    EXPECT_EQ(OnlyFault(faults), "gives another picture when several threads call it (1 x 1, progress 0.4)");
}
} // namespace
} // namespace qmx::host
