#include "tests/support/ErrorInjector.h"

#include "tests/support/BlockCodes.h"

#include <cstddef>

namespace orva::test {

namespace {

constexpr int kGolayVoiceWords = 4;
constexpr int kHammingVoiceWords = 3;
constexpr char kQuietStatus = '2'; // "unknown", what a subscriber unit sends

// Characters a receiver may slice next to the right one.
char NeighbouringCharacter(char dibit, bool upward) {
    if (dibit == '0') {
        return '1';
    }
    if (dibit == '3') {
        return '2';
    }
    return static_cast<char>(upward ? dibit + 1 : dibit - 1);
}

} // namespace

ErrorPlan ErrorPlan::Heaviest() {
    return {.syncDibits = 10,
            .nidBits = 11,
            .nidParity = true,
            .headerWordBits = 2,
            .headerSymbols = 8,
            .linkWordBits = 1,
            .linkControlSymbols = 6,
            .encryptionSyncSymbols = 4,
            .terminatorWordBits = 3,
            .voiceGolayBits = 3,
            .voiceHammingBits = 1,
            .randomStatus = true};
}

std::uint64_t ErrorInjector::FlipBits(std::uint64_t word, int width, int count) {
    // Each bit in turn is taken with the chance that makes every choice of `count` places equally likely.
    for (int left = width; left > 0 && count > 0; --left) {
        if (random.Below(static_cast<std::uint32_t>(left)) < static_cast<std::uint32_t>(count)) {
            word ^= std::uint64_t{1} << (left - 1);
            --count;
        }
    }
    return word;
}

void ErrorInjector::ReplaceSymbols(std::span<std::uint8_t> symbols, int count) {
    constexpr std::uint32_t kOtherValues = 63;
    const std::uint64_t places = FlipBits(0, static_cast<int>(symbols.size()), count);
    for (std::size_t place = 0; place < symbols.size(); ++place) {
        if (places >> place & 1) {
            symbols[place] = static_cast<std::uint8_t>(symbols[place] ^ (1 + random.Below(kOtherValues)));
        }
    }
}

std::string ErrorInjector::SpoilSync(const std::string& sync) {
    std::string spoilt = sync;
    const std::uint64_t places = FlipBits(0, static_cast<int>(sync.size()), plan.syncDibits);
    for (std::size_t place = 0; place < sync.size(); ++place) {
        if (places >> place & 1) {
            spoilt[place] = NeighbouringCharacter(sync[place], random.Below(2) != 0);
        }
    }
    return spoilt;
}

std::uint64_t ErrorInjector::SpoilNid(std::uint64_t nid) {
    const std::uint64_t parity = plan.nidParity ? random.Below(2) : nid & 1;
    return FlipBits(nid >> 1, kNidBits - 1, plan.nidBits) << 1 | parity;
}

VoiceErrorPattern ErrorInjector::VoiceErrors() {
    VoiceErrorPattern errors = {};
    for (std::size_t word = 0; word < kGolayVoiceWords + kHammingVoiceWords; ++word) {
        const bool golay = word < kGolayVoiceWords;
        errors[word] = static_cast<std::uint32_t>(FlipBits(
            0, golay ? kGolay23Bits : kHamming15Bits, golay ? plan.voiceGolayBits : plan.voiceHammingBits));
    }
    return errors;
}

char ErrorInjector::StatusSymbol() {
    return plan.randomStatus ? static_cast<char>('0' + random.Below(4)) : kQuietStatus;
}

} // namespace orva::test
