/// Speech, found again in a recording of the loudspeaker.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace orva::tools {

/// The same sound at twice the rate: between each two samples one more, from the 64 around it by a windowed
/// sinc. The result has twice as many samples, of which those at even places are the old ones.
std::vector<double> AtTwiceTheRate(std::span<const std::int16_t> samples);

/// Finds speech in a recording that begins at any time and may lose parts of it or hold silence between them,
/// as when a sound device runs dry.
///
/// The speech is cut into short pieces. Each must lie where the one before ends; where it does not, a longer
/// stretch of the speech from there on is searched for. So a short piece never passes by chance for another
/// one. All pieces together give one correlation, to which a piece that is not found adds silence.
class SpeechMatch {
public:
    struct Piece {
        std::size_t start;                ///< in the speech [samples]
        std::optional<std::size_t> place; ///< in the recording [samples]; none if it is not there
        bool isAudible;                   ///< loud enough to be told from silence
    };

    /// \param wanted     the speech, 16000 Hz
    /// \param recording  16000 Hz, at any level
    SpeechMatch(std::span<const double> wanted, std::span<const std::int16_t> recording);

    /// Of all the speech with what was found of it, -1 .. 1; 0 if either is silent.
    [[nodiscard]] double Correlation() const;

    [[nodiscard]] std::size_t AudibleSamples() const;      ///< of the speech, pauses left out
    [[nodiscard]] std::size_t FoundAudibleSamples() const; ///< of those

    /// How often what was found does not go on at once: the device ran dry, or something was lost.
    [[nodiscard]] std::size_t Breaks() const;

    /// In the order of the speech.
    [[nodiscard]] const std::vector<Piece>& Pieces() const { return pieces; }

private:
    [[nodiscard]] bool LiesWhereDue(std::size_t start, std::size_t length, bool isAudible) const;
    void Place(std::size_t start);
    void ForgetPauses();
    [[nodiscard]] std::size_t SearchEnd(std::size_t start, std::size_t length) const;
    [[nodiscard]] std::optional<std::size_t> Search(std::size_t start);
    [[nodiscard]] bool FitsAtAGlance(std::size_t start, std::size_t place, std::size_t length) const;
    [[nodiscard]] std::size_t LengthAt(std::size_t start, std::size_t longest) const;
    [[nodiscard]] double CorrelationAt(std::size_t start, std::size_t place, std::size_t length) const;
    [[nodiscard]] double SpeechPower(std::size_t start, std::size_t length) const;
    [[nodiscard]] double HeardPower(std::size_t place, std::size_t length) const;

    std::vector<double> speech;
    std::vector<double> heard;
    std::vector<double> speechPower; ///< of all samples before each; one more than there are samples
    std::vector<double> heardPower;
    double quietPower = 0;    ///< of a sample: at most this and a piece is a pause
    std::size_t due = 0;      ///< where the next piece should lie
    std::size_t foundEnd = 0; ///< of the last audible piece that was found
    bool hasBegun = false;    ///< an audible piece was found
    bool isAnchored = false;  ///< the piece before ends at `due`
    int fruitlessSearches = 0;
    std::vector<Piece> pieces;
};

} // namespace orva::tools
