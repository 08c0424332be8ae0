#include "tools/orva-heard/SpeechMatch.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <numeric>

namespace orva::tools {

namespace {

/// 4 ms at 16000 Hz: one in which the device ran dry is lost, and costs little.
constexpr std::size_t kPieceSamples = 64;

/// What is searched for, 32 ms: half a voice block, and long enough to be like no other stretch of speech.
constexpr std::size_t kSearchedSamples = 512;

/// The same sound correlates better than this, another one far worse.
constexpr double kFits = 0.99;

/// At a first glance every 16th sample is compared; what fits, fits there nearly as well.
constexpr std::size_t kGlanceStep = 16;
constexpr double kGlanceFits = 0.9;

/// A piece so far below the speech as a whole, in power, is a pause: it has no shape to be found by.
constexpr double kQuietRatio = 1e-4;

/// Speech and recording run at the same speed: a piece is at most two seconds behind the place where it is
/// due. Further on the same may be said again.
constexpr std::size_t kSearchAhead = 32000;

/// The rest of the speech lies in the rest of the recording, but for a second that may be lost.
constexpr std::size_t kMostLost = 16000;

/// A recording of something else is not searched for every piece.
constexpr int kMostFruitlessSearches = 300;

constexpr int kSideTaps = 32; ///< of the interpolator, on either side

/// Tap of the interpolator at `distance` + 0.5 samples: a sinc under a Blackman window.
double HalfwayTap(int distance) {
    const double place = distance + 0.5;
    const double turn = std::numbers::pi * place / kSideTaps;
    const double window = 0.42 + 0.5 * std::cos(turn) + 0.08 * std::cos(2 * turn);
    return window * std::sin(std::numbers::pi * place) / (std::numbers::pi * place);
}

std::vector<double> RunningPower(const std::vector<double>& samples) {
    std::vector<double> power(samples.size() + 1);
    std::transform_inclusive_scan(samples.begin(), samples.end(), power.begin() + 1, std::plus<>(),
                                  [](double sample) { return sample * sample; });
    return power;
}

/// Sum of the products of `length` samples.
double Product(const std::vector<double>& a, std::size_t startA, const std::vector<double>& b,
               std::size_t startB, std::size_t length) {
    return std::inner_product(a.data() + startA, a.data() + startA + length, b.data() + startB, 0.0);
}

} // namespace

std::vector<double> AtTwiceTheRate(std::span<const std::int16_t> samples) {
    std::vector<double> taps;
    taps.reserve(kSideTaps);
    for (int distance = 0; distance < kSideTaps; ++distance) {
        taps.push_back(HalfwayTap(distance));
    }
    const auto sampleAt = [&](std::ptrdiff_t place) -> double {
        return place < 0 || place >= std::ssize(samples) ? 0 : samples[static_cast<std::size_t>(place)];
    };
    std::vector<double> result;
    result.reserve(2 * samples.size());
    for (std::ptrdiff_t n = 0; n < std::ssize(samples); ++n) {
        double between = 0;
        for (std::ptrdiff_t i = 0; i < std::ssize(taps); ++i) {
            between += taps[static_cast<std::size_t>(i)] * (sampleAt(n - i) + sampleAt(n + 1 + i));
        }
        result.push_back(sampleAt(n));
        result.push_back(between);
    }
    return result;
}

SpeechMatch::SpeechMatch(std::span<const double> wanted, std::span<const std::int16_t> recording)
    : speech(wanted.begin(), wanted.end()),
      heard(recording.begin(), recording.end()),
      speechPower(RunningPower(speech)),
      heardPower(RunningPower(heard)) {
    if (!speech.empty()) {
        quietPower = kQuietRatio * speechPower.back() / static_cast<double>(speech.size());
    }
    for (std::size_t start = 0; start < speech.size(); start += kPieceSamples) {
        Place(start);
    }
}

/// Decides where the next piece lies.
void SpeechMatch::Place(std::size_t start) {
    const std::size_t length = LengthAt(start, kPieceSamples);
    const bool isAudible = SpeechPower(start, length) > quietPower * static_cast<double>(length);
    std::optional<std::size_t> place;
    if (LiesWhereDue(start, length, isAudible)) {
        place = due;
    } else if (isAudible) {
        ForgetPauses();
        place = Search(start);
        isAnchored = place.has_value();
    }
    hasBegun = hasBegun || place;
    due = place ? *place + length : due + (hasBegun ? length : 0);
    foundEnd = place && isAudible ? due : foundEnd;
    pieces.push_back({start, place, isAudible});
}

bool SpeechMatch::LiesWhereDue(std::size_t start, std::size_t length, bool isAudible) const {
    return isAnchored && due + length <= heard.size() &&
           (!isAudible || CorrelationAt(start, due, length) >= kFits);
}

/// Behind a break it is not known where the pauses before it were.
void SpeechMatch::ForgetPauses() {
    for (auto piece = pieces.rbegin(); piece != pieces.rend() && !piece->isAudible; ++piece) {
        piece->place.reset();
    }
}

/// The first place at which a stretch of speech fits.
std::optional<std::size_t> SpeechMatch::Search(std::size_t start) {
    const std::size_t length = LengthAt(start, kSearchedSamples);
    if (fruitlessSearches == kMostFruitlessSearches) {
        return std::nullopt;
    }
    const std::size_t end = SearchEnd(start, length);
    for (std::size_t place = foundEnd; place < end; ++place) {
        double fit = FitsAtAGlance(start, place, length) ? CorrelationAt(start, place, length) : 0;
        if (fit >= kFits) {
            // It fits best at the peak, a sample or two further on.
            for (; place + 1 < end; ++place) {
                const double next = CorrelationAt(start, place + 1, length);
                if (next <= fit) {
                    break;
                }
                fit = next;
            }
            return place;
        }
    }
    ++fruitlessSearches;
    return std::nullopt;
}

bool SpeechMatch::FitsAtAGlance(std::size_t start, std::size_t place, std::size_t length) const {
    double product = 0;
    double powerOfSpeech = 0;
    double powerOfHeard = 0;
    const double* wanted = speech.data() + start;
    const double* there = heard.data() + place;
    for (std::size_t i = 0; i < length; i += kGlanceStep) {
        product += wanted[i] * there[i];
        powerOfSpeech += wanted[i] * wanted[i];
        powerOfHeard += there[i] * there[i];
    }
    return product > 0 && product * product >= kGlanceFits * kGlanceFits * powerOfSpeech * powerOfHeard;
}

/// Where a stretch of speech cannot lie any more.
std::size_t SpeechMatch::SearchEnd(std::size_t start, std::size_t length) const {
    const std::size_t room = heard.size() + kMostLost;
    const std::size_t rest = speech.size() - start;
    std::size_t end = heard.size() < length ? 0 : heard.size() - length + 1;
    end = std::min(end, room < rest ? 0 : room - rest);
    return hasBegun ? std::min(end, due + kSearchAhead) : end;
}

double SpeechMatch::Correlation() const {
    double product = 0;
    double found = 0;
    for (const Piece& piece : pieces) {
        if (piece.place) {
            const std::size_t length = LengthAt(piece.start, kPieceSamples);
            product += Product(speech, piece.start, heard, *piece.place, length);
            found += HeardPower(*piece.place, length);
        }
    }
    const double power = speechPower.back() * found;
    return power > 0 ? product / std::sqrt(power) : 0;
}

std::size_t SpeechMatch::AudibleSamples() const {
    std::size_t count = 0;
    for (const Piece& piece : pieces) {
        count += piece.isAudible ? LengthAt(piece.start, kPieceSamples) : 0;
    }
    return count;
}

std::size_t SpeechMatch::FoundAudibleSamples() const {
    std::size_t count = 0;
    for (const Piece& piece : pieces) {
        count += piece.isAudible && piece.place ? LengthAt(piece.start, kPieceSamples) : 0;
    }
    return count;
}

std::size_t SpeechMatch::Breaks() const {
    std::size_t count = 0;
    const Piece* last = nullptr;
    for (const Piece& piece : pieces) {
        if (piece.place) {
            count += last != nullptr && *piece.place - *last->place != piece.start - last->start ? 1 : 0;
            last = &piece;
        }
    }
    return count;
}

std::size_t SpeechMatch::LengthAt(std::size_t start, std::size_t longest) const {
    return std::min(longest, speech.size() - start);
}

double SpeechMatch::CorrelationAt(std::size_t start, std::size_t place, std::size_t length) const {
    const double power = SpeechPower(start, length) * HeardPower(place, length);
    return power > 0 ? Product(speech, start, heard, place, length) / std::sqrt(power) : 0;
}

double SpeechMatch::SpeechPower(std::size_t start, std::size_t length) const {
    return speechPower[start + length] - speechPower[start];
}

double SpeechMatch::HeardPower(std::size_t place, std::size_t length) const {
    return heardPower[place + length] - heardPower[place];
}

} // namespace orva::tools
