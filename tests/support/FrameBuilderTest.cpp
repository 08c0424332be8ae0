#include "tests/support/FrameBuilder.h"

#include "tests/support/BlockCodes.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ReedSolomonEncoder.h"

#include <algorithm>
#include <bit>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr unsigned kNac = 0x293;

// Positions in an LDU after the network identifier, counted from 1 with status symbols: the groups of link
// control or encryption sync words, and the low-speed data.
struct Range {
    std::size_t first;
    std::size_t last;
};
constexpr Range kLinkRanges[] = {{149, 169}, {244, 263}, {338, 358}, {433, 453}, {528, 547}, {622, 642}};
constexpr Range kLowSpeedDataRange = {717, 732};
constexpr std::size_t kNidEnd = 57; // 24 of sync, 32 of network identifier, one status symbol

bool IsStatus(std::size_t place) {
    return place % 36 == 35;
}

bool IsIn(const Range& range, std::size_t position) {
    return position >= range.first && position <= range.last;
}

BitString Bits(const std::string& dibits) {
    BitString bits;
    for (const char dibit : dibits) {
        bits.Append(static_cast<std::uint64_t>(dibit - '0'), 2);
    }
    return bits;
}

std::string WithoutStatus(const std::string& frame) {
    std::string kept;
    for (std::size_t place = 0; place < frame.size(); ++place) {
        if (!IsStatus(place)) {
            kept.push_back(frame[place]);
        }
    }
    return kept;
}

// The dibits of an LDU that `wanted` takes by their position, without status symbols.
template <class Wanted>
std::string Select(const std::string& ldu, const Wanted& wanted) {
    std::string kept;
    for (std::size_t place = kNidEnd; place < ldu.size(); ++place) {
        if (!IsStatus(place) && wanted(place - kNidEnd + 1)) {
            kept.push_back(ldu[place]);
        }
    }
    return kept;
}

std::string LinkDibits(const std::string& ldu) {
    return Select(ldu, [](std::size_t position) {
        return std::any_of(std::begin(kLinkRanges), std::end(kLinkRanges),
                           [&](const Range& range) { return IsIn(range, position); });
    });
}

std::string VoiceDibits(const std::string& ldu) {
    return Select(ldu, [](std::size_t position) {
        return !IsIn(kLowSpeedDataRange, position) &&
               std::none_of(std::begin(kLinkRanges), std::end(kLinkRanges),
                            [&](const Range& range) { return IsIn(range, position); });
    });
}

// The information symbols of the 24 Hamming words of an LDU.
std::vector<std::uint8_t> LinkSymbols(const std::string& ldu) {
    const BitString bits = Bits(LinkDibits(ldu));
    std::vector<std::uint8_t> symbols;
    for (std::size_t first = 0; first < bits.Size(); first += 10) {
        symbols.push_back(static_cast<std::uint8_t>(bits.Field(first, 10) >> 4));
    }
    return symbols;
}

VoiceWords RandomVoice(std::uint64_t seed) {
    RandomSource random(seed);
    VoiceWords words;
    for (VoiceBits& word : words) {
        for (std::uint8_t& bit : word) {
            bit = static_cast<std::uint8_t>(random.Below(2));
        }
    }
    return words;
}

HeaderFields SomeHeader() {
    return {.messageIndicator = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99},
            .manufacturer = 0x90,
            .algorithm = 0x84,
            .key = 0xBEEF,
            .talkGroup = 0xCAFE};
}

TEST(FrameBuilder, FrameLengths) {
    FrameBuilder builder;
    EXPECT_EQ(builder.Header(kNac, {}).size(), 396u); // 792 bits
    EXPECT_EQ(builder.Ldu1(kNac, {}, RandomVoice(1)).size(), 864u);
    EXPECT_EQ(builder.Ldu2(kNac, {}, RandomVoice(1)).size(), 864u);
    EXPECT_EQ(builder.Terminator(kNac).size(), 72u);
    EXPECT_EQ(builder.TerminatorWithLinkControl(kNac, {}).size(), 216u);
}

TEST(FrameBuilder, BeginsWithSyncAndNetworkIdentifier) {
    FrameBuilder builder;
    const std::string frame = builder.Terminator(kNac);
    EXPECT_EQ(frame.substr(0, 24), "111113113311333313133333");
    EXPECT_EQ(Bits(WithoutStatus(frame)).Field(48, 64), EncodeNid(kNac, 0x3));
}

TEST(FrameBuilder, FirstStatusSymbolStandsBehindElevenDibitsOfTheNetworkIdentifier) {
    FrameBuilder builder(ErrorInjector({.randomStatus = true}));
    FrameBuilder quiet;
    const std::string noisy = builder.Frame(kNac, 1, {});
    const std::string plain = quiet.Frame(kNac, 1, {});
    ASSERT_EQ(noisy.size(), plain.size());
    for (std::size_t place = 0; place < noisy.size(); ++place) {
        if (place != 35 && place != 71) {
            EXPECT_EQ(noisy[place], plain[place]) << place;
        }
    }
}

TEST(FrameBuilder, PadsWithZeroDibits) {
    FrameBuilder builder;
    const std::string frame = builder.Terminator(kNac);
    EXPECT_EQ(frame.substr(57, 14), std::string(14, '0'));
    const std::string header = WithoutStatus(builder.Header(kNac, {}));
    EXPECT_EQ(header.substr(header.size() - 5), "00000");
}

TEST(FrameBuilder, EndsWithAStatusSymbol) {
    FrameBuilder builder;
    for (int bits = 0; bits < 200; bits += 2) {
        BitString body;
        body.PadTo(static_cast<std::size_t>(bits));
        const std::string frame = builder.Frame(kNac, 12, body);
        ASSERT_EQ(frame.size() % 36, 0u) << bits;
        ASSERT_LT(frame.size(), 57u + static_cast<std::size_t>(bits) / 2 + 36 + 5) << bits;
        ASSERT_EQ(frame.back(), '2') << bits;
    }
}

TEST(FrameBuilder, HeaderCarriesItsFieldsInGolayWords) {
    FrameBuilder builder;
    const std::string content = WithoutStatus(builder.Header(kNac, SomeHeader()));
    const BitString bits = Bits(content.substr(56));
    BitString information;
    std::vector<std::uint8_t> symbols;
    for (std::size_t word = 0; word < 36; ++word) {
        const std::uint64_t received = bits.Field(18 * word, 18);
        ASSERT_EQ(received, EncodeGolay18(static_cast<unsigned>(received >> 12))) << "word " << word;
        symbols.push_back(static_cast<std::uint8_t>(received >> 12));
        information.Append(received >> 12, 6);
    }
    EXPECT_EQ(information.Field(0, 64), 0x1122334455667788u);
    EXPECT_EQ(information.Field(64, 8), 0x99u);
    EXPECT_EQ(information.Field(72, 8), 0x90u);
    EXPECT_EQ(information.Field(80, 8), 0x84u);
    EXPECT_EQ(information.Field(88, 16), 0xBEEFu);
    EXPECT_EQ(information.Field(104, 16), 0xCAFEu);
    EXPECT_EQ(EncodeReedSolomon(std::span(symbols).first(20), 16), symbols);
}

TEST(FrameBuilder, GroupLinkControlStandsInItsSymbols) {
    FrameBuilder builder;
    LinkControl link;
    link.manufacturer = 0x90;
    link.serviceOptions = 0xA5;
    link.talkGroup = 0xF12E;
    link.source = 0xABCDEF;
    const std::vector<std::uint8_t> symbols = LinkSymbols(builder.Ldu1(kNac, link, RandomVoice(1)));
    ASSERT_EQ(symbols.size(), 24u);
    EXPECT_EQ(symbols[0] * 4 + (symbols[1] >> 4), 0);
    EXPECT_EQ((symbols[1] & 15) * 16 + (symbols[2] >> 2), 0x90);
    EXPECT_EQ((symbols[2] & 3) * 64 + symbols[3], 0xA5);
    EXPECT_EQ((symbols[5] & 15) * 4096 + symbols[6] * 64 + symbols[7], 0xF12E);
    EXPECT_EQ(((symbols[8] * 64 + symbols[9]) * 64 + symbols[10]) * 64 + symbols[11], 0xABCDEF);
    EXPECT_EQ(EncodeReedSolomon(std::span(symbols).first(12), 12), symbols);
}

TEST(FrameBuilder, UnitToUnitLinkControlStandsInItsSymbols) {
    FrameBuilder builder;
    LinkControl link;
    link.format = LinkControl::kUnitToUnitVoice;
    link.destination = 0x123456;
    link.source = 0x654321;
    const std::vector<std::uint8_t> symbols = LinkSymbols(builder.Ldu1(kNac, link, RandomVoice(1)));
    EXPECT_EQ(symbols[0] * 4 + (symbols[1] >> 4), 3);
    EXPECT_EQ(((symbols[4] * 64 + symbols[5]) * 64 + symbols[6]) * 64 + symbols[7], 0x123456);
    EXPECT_EQ(((symbols[8] * 64 + symbols[9]) * 64 + symbols[10]) * 64 + symbols[11], 0x654321);
}

TEST(FrameBuilder, OtherLinkControlIsSentAsItStands) {
    LinkControl link;
    link.format = 0x44;
    link.otherOctets = {1, 2, 3, 4, 5, 6, 7, 8};
    const BitString bits = LinkControlBits(link);
    ASSERT_EQ(bits.Size(), 72u);
    EXPECT_EQ(bits.Field(0, 8), 0x44u);
    EXPECT_EQ(bits.Field(8, 64), 0x0102030405060708u);
}

TEST(FrameBuilder, EncryptionSyncStandsInItsSymbols) {
    FrameBuilder builder;
    EncryptionSync sync;
    sync.messageIndicator[0] = 0xFC;
    sync.messageIndicator[8] = 0x3F;
    sync.algorithm = 0x81;
    sync.key = 0x1234;
    const std::vector<std::uint8_t> symbols = LinkSymbols(builder.Ldu2(kNac, sync, RandomVoice(1)));
    EXPECT_EQ(symbols[0], 63);
    EXPECT_EQ(symbols[11], 63);
    EXPECT_EQ(symbols[12] * 4 + (symbols[13] >> 4), 0x81);
    EXPECT_EQ(((symbols[13] & 15) * 64 + symbols[14]) * 64 + symbols[15], 0x1234);
    EXPECT_EQ(EncodeReedSolomon(std::span(symbols).first(16), 8), symbols);
}

TEST(FrameBuilder, LinkWordsAreHammingWords) {
    FrameBuilder builder;
    const BitString bits = Bits(LinkDibits(builder.Ldu1(kNac, {}, RandomVoice(1))));
    ASSERT_EQ(bits.Size(), 240u);
    for (std::size_t first = 0; first < bits.Size(); first += 10) {
        EXPECT_EQ(bits.Field(first, 10), EncodeHamming10(static_cast<unsigned>(bits.Field(first, 10) >> 4)));
    }
}

TEST(FrameBuilder, VoiceWordsStandInTheirPlaces) {
    FrameBuilder builder;
    const VoiceWords voice = RandomVoice(9);
    for (const std::string& ldu : {builder.Ldu1(kNac, {}, voice), builder.Ldu2(kNac, {}, voice)}) {
        const BitString bits = Bits(VoiceDibits(ldu));
        ASSERT_EQ(bits.Size(), 9u * 144u);
        for (std::size_t word = 0; word < voice.size(); ++word) {
            const ChannelBits expected = EncodeImbeWord(voice[word]);
            for (std::size_t bit = 0; bit < expected.size(); ++bit) {
                ASSERT_EQ(bits.Field(144 * word + bit, 1), expected[bit])
                    << "word " << word << " bit " << bit;
            }
        }
    }
}

TEST(FrameBuilder, LowSpeedDataStandsBeforeTheLastVoiceWord) {
    FrameBuilder builder;
    const std::string ldu = builder.Ldu2(kNac, {}, RandomVoice(1), {0x5A, 0xC3});
    const BitString bits =
        Bits(Select(ldu, [](std::size_t position) { return IsIn(kLowSpeedDataRange, position); }));
    ASSERT_EQ(bits.Size(), 32u);
    EXPECT_EQ(bits.Field(0, 16), EncodeLowSpeedData(0x5A));
    EXPECT_EQ(bits.Field(16, 16), EncodeLowSpeedData(0xC3));
}

TEST(FrameBuilder, TerminatorLinkControlStandsInGolayWords) {
    FrameBuilder builder;
    LinkControl link;
    link.talkGroup = 0x1234;
    link.source = 0x00BEEF;
    const BitString bits = Bits(WithoutStatus(builder.TerminatorWithLinkControl(kNac, link)).substr(56));
    BitString information;
    for (std::size_t word = 0; word < 12; ++word) {
        const auto received = static_cast<std::uint32_t>(bits.Field(24 * word, 24));
        ASSERT_EQ(received, EncodeGolay24(received >> 12)) << "word " << word;
        information.Append(received >> 12, 12);
    }
    EXPECT_EQ(information.Field(0, 8), 0u);
    EXPECT_EQ(information.Field(32, 16), 0x1234u);
    EXPECT_EQ(information.Field(48, 24), 0xBEEFu);
    const std::vector<std::uint8_t> symbols = information.Symbols();
    EXPECT_EQ(EncodeReedSolomon(std::span(symbols).first(12), 12), symbols);
}

TEST(FrameBuilder, HeaviestErrorsStayWithinWhatEachWordCorrects) {
    FrameBuilder builder{ErrorInjector(ErrorPlan::Heaviest())};
    FrameBuilder clean;
    for (int trial = 0; trial < 20; ++trial) {
        const BitString received = Bits(WithoutStatus(builder.Header(kNac, SomeHeader())));
        const BitString sent = Bits(WithoutStatus(clean.Header(kNac, SomeHeader())));
        EXPECT_EQ(std::popcount((received.Field(48, 64) ^ sent.Field(48, 64)) >> 1), 11);
        int wrongSymbols = 0;
        for (std::size_t word = 0; word < 36; ++word) {
            const std::uint64_t difference =
                received.Field(112 + 18 * word, 18) ^ sent.Field(112 + 18 * word, 18);
            if (std::popcount(difference) != 2) {
                ++wrongSymbols; // another word of distance 8 or more, less its own two errors
            }
        }
        EXPECT_EQ(wrongSymbols, 8);
    }
}

TEST(FrameBuilder, EveryFrameHasErrorsOfItsOwn) {
    FrameBuilder builder{ErrorInjector(ErrorPlan::Heaviest())};
    EXPECT_NE(builder.Header(kNac, {}), builder.Header(kNac, {}));
}

} // namespace
} // namespace orva::test
