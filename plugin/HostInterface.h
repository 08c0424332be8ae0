/// The contract between a receiver host and the plug-in: codes, values and records, all little-endian.
///
/// Nothing here depends on the rest of the system, so that a host's author can take this file alone.
/// `docs/HOST-INTERFACE.md` tells how the parts are used.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef _WIN32
#define ORVA_HOST_CALL __stdcall ///< the platform's own convention: the called function cleans the stack
#else
#define ORVA_HOST_CALL
#endif

/// The platform's window record, as its own headers declare it.
struct HWND__; // NOLINT(bugprone-reserved-identifier)

namespace orva::plugin {

using WindowHandle = HWND__*;

/// What `zemPluginInit` answers: the number of this interface.
constexpr std::uint32_t kInterfaceNumber = 1153;

/// The plug-in's name, as `zemPluginInit` and the last message of an instance give it.
constexpr char kPluginName[] = "ORVA";
constexpr std::uint32_t kPluginNameLength = sizeof(kPluginName) - 1;

/// The host's answer to a code that it does not support, and the answer when there is no such instance.
constexpr std::uint32_t kUnsupported = 0x80000000U;

/// What `zemPluginStart` answers when the handle is in use, and when no instance could be started.
constexpr std::uint32_t kStartRefused = 0xFFFFFFFFU;

/// Codes from the host, by `zemPluginNotify`.
enum class HostCode : std::int32_t {
    Reset = 0,           ///< clears the saved stream value
    Power = 256,         ///< param: non-zero is on; while off no samples are processed
    Frequency = 2048,    ///< param: tuned frequency [Hz]
    Mode = 2304,         ///< param: `ModeNumber`; or size 8 and the two modes, in either order, for both
    SquelchSetup = 2817, ///< param: squelch type; data: `SquelchValues` or null
    SquelchState = 2818, ///< param: non-zero when the host's squelch is closed
    Volume = 3584,       ///< param: 0 .. 31
    Mute = 3585,         ///< param: flag
    Scanner = 3840,      ///< param: flag
    Close = 16384,       ///< ends the instance
};

/// Codes to the host, through its callback.
enum class PluginCode : std::int32_t {
    Mode = 2304, ///< param: `ModeNumber` on the air; with both modes allowed, size 8 and the pair 2, 19
    SquelchSetup = 2816,    ///< param: squelch type; 28 bytes of `SquelchValues`; once, after the start
    SquelchResult = 2818,   ///< param: 0, 2, 4, 256 or 512; 28 bytes of `SquelchValues` as measured
    VolumeChanged = 4352,   ///< param: 0 .. 31
    MuteChanged = 4353,     ///< param: flag
    AudioOffer = 4362,      ///< param: 3; `AudioOffer` with samples that the host may change
    TrunkingReport = 4365,  ///< param: 0; `TrunkingReport`
    Closing = 16384,        ///< param: 0; the plug-in's name; last message of an instance
    StreamValue = 16385,    ///< param: the value; a playback begins or ends
    Query = 16386,          ///< param: `QueryCode`; the answer is the value, or `kUnsupported`
    ReceiverRecord = 16390, ///< param: 0; the record; capabilities changed
};

/// What a query may ask for: the present value of the code.
enum class QueryCode : std::uint32_t {
    Power = 256,
    Frequency = 2048,
    SquelchState = 2818,
    Scanner = 3840,
    StreamValue = 16385,
};

/// Modes of reception as the host numbers them.
enum class ModeNumber : std::uint32_t {
    Fm = 2,
    Digital = 19,
};

/// Bytes of the list of both modes that may come with code 2304.
constexpr std::uint32_t kModeListSize = 8;

/// Squelch types: bits in a receiver record, and single values in codes 2816, 2817 and 2818.
namespace squelch_type {
constexpr std::uint32_t kLevel = 1; ///< done by the host itself
constexpr std::uint32_t kNoise = 2;
constexpr std::uint32_t kCtcss = 4;
constexpr std::uint32_t kVoice = 0x100;
constexpr std::uint32_t kDcs = 0x200;
constexpr std::uint32_t kAll = kNoise | kCtcss | kVoice | kDcs; ///< those that this plug-in measures
} // namespace squelch_type

/// Param of code 4362.
constexpr std::uint32_t kAudioOfferParam = 3;

/// The host's function. The window is the one that `zemPluginStart` gave. Called on the thread of the
/// plug-in's windows only.
using ZemHostCallback = std::uint32_t(ORVA_HOST_CALL*)(WindowHandle window, std::int32_t code,
                                                       std::uint32_t param, std::uint32_t size, void* data);

/// Thresholds, from either side, or what was measured.
struct SquelchValues {
    std::int32_t level;
    std::int32_t noise;       ///< threshold; in a result, as measured
    std::int32_t ctcss;       ///< tone [mHz]; in a result, the tone found, or 0
    std::int32_t reserved[2]; ///< 0
    std::int32_t voice;       ///< threshold; in a result, as measured
    std::int32_t dcs;         ///< code, negative for an inverted one
};
static_assert(sizeof(SquelchValues) == 28);
static_assert(offsetof(SquelchValues, level) == 0 && offsetof(SquelchValues, noise) == 4);
static_assert(offsetof(SquelchValues, ctcss) == 8 && offsetof(SquelchValues, reserved) == 12);
static_assert(offsetof(SquelchValues, voice) == 20 && offsetof(SquelchValues, dcs) == 24);

/// Head of an offer of audio; `sampleCount` 16-bit samples follow it at once.
struct AudioOffer {
    std::uint32_t sampleRate; ///< [Hz]
    std::uint32_t bitsPerSample;
    std::uint32_t channels;
    std::uint32_t sampleCount;
};
static_assert(sizeof(AudioOffer) == 16);
static_assert(offsetof(AudioOffer, sampleRate) == 0 && offsetof(AudioOffer, bitsPerSample) == 4);
static_assert(offsetof(AudioOffer, channels) == 8 && offsetof(AudioOffer, sampleCount) == 12);

/// Declared size of an offer of `sampleCount` samples: three bytes, zero, follow the samples.
constexpr std::uint32_t AudioOfferSize(std::uint32_t sampleCount) {
    constexpr std::uint32_t kTrailingBytes = 3;
    return static_cast<std::uint32_t>(sizeof(AudioOffer)) + 2 * sampleCount + kTrailingBytes;
}

/// One trunking record, packed, 22 bytes: type, channel identifier, channel number (u16), network access
/// code (u32), coded frequency (u32), source (u32), destination (u32), service options (u16).
constexpr std::uint32_t kTrunkingReportRecordSize = 22;

/// Head of a trunking report; `count` records of 22 bytes follow it at once.
struct TrunkingReport {
    char source[128];           ///< "K728 ORVA", zero-filled
    std::uint32_t version;      ///< 256
    std::uint32_t sizeFromHere; ///< bytes from `count` on: 22 `count` + 4
    std::uint32_t count;
};
static_assert(sizeof(TrunkingReport) == 140);
static_assert(offsetof(TrunkingReport, source) == 0 && offsetof(TrunkingReport, version) == 128);
static_assert(offsetof(TrunkingReport, sizeFromHere) == 132 && offsetof(TrunkingReport, count) == 136);

/// Size of a report of `count` records.
constexpr std::uint32_t TrunkingReportSize(std::uint32_t count) {
    return static_cast<std::uint32_t>(sizeof(TrunkingReport)) + kTrunkingReportRecordSize * count;
}

/// An address in the host's 32-bit address space; 0 is null.
using RecordAddress = std::uint32_t;

/// The head of the host's description of its receiver. Optional sections follow it in the same block, packed
/// in the order of their pointers, and unaligned; `totalSize` counts them too. What is called reserved here
/// is the host's own and passes through.
struct ReceiverRecord {
    std::uint32_t totalSize;  ///< bytes of the whole block
    std::uint32_t headerSize; ///< 400 in every record that the plug-in makes
    std::uint8_t reserved8[36];
    char deviceType[32];
    char serialNumber[9]; ///< 8 characters and a terminator
    std::uint8_t reserved85[87];
    RecordAddress section172; ///< 24 bytes
    std::uint32_t audioLowHz;
    std::uint32_t audioHighHz;
    RecordAddress section184; ///< 28 bytes
    RecordAddress section188; ///< 16 bytes
    std::uint32_t featureFlags;
    RecordAddress section196; ///< its first u32 is its byte length
    std::uint32_t squelchTypes;
    std::uint8_t reserved204[8];
    std::uint32_t squelchLevelMin;
    std::uint32_t squelchLevelMax;
    std::uint32_t count224;   ///< entries of `section224`
    RecordAddress section224; ///< entries of 12 bytes
    std::uint32_t modeCount;  ///< entries of `modeTable`
    std::uint8_t reserved232[4];
    RecordAddress modeTable; ///< `ModeEntry`s
    std::uint8_t reserved240[24];
    RecordAddress section264; ///< 24 bytes
    std::uint8_t reserved268[8];
    std::uint32_t volumeMax;
    std::uint32_t volumeStep;
    std::uint8_t reserved284[24];
    RecordAddress section308; ///< 96 bytes
    std::uint8_t reserved312[4];
    RecordAddress section316; ///< its first u32 is its byte length
    std::uint32_t count324;   ///< entries of `section324`
    RecordAddress section324; ///< entries of 12 bytes
    std::uint32_t count336;   ///< entries of `section336`
    std::uint8_t reserved332[4];
    RecordAddress section336; ///< entries of 20 bytes
    std::uint8_t reserved340[20];
    RecordAddress section360; ///< 12 bytes
    std::uint8_t reserved364[20];
    RecordAddress section384; ///< 96 bytes
    std::uint8_t reserved388[12];
};
constexpr std::uint32_t kReceiverRecordHeaderSize = 400;
static_assert(sizeof(ReceiverRecord) == kReceiverRecordHeaderSize);
static_assert(offsetof(ReceiverRecord, totalSize) == 0 && offsetof(ReceiverRecord, headerSize) == 4);
static_assert(offsetof(ReceiverRecord, deviceType) == 44 && offsetof(ReceiverRecord, serialNumber) == 76);
static_assert(offsetof(ReceiverRecord, section172) == 172 && offsetof(ReceiverRecord, audioLowHz) == 176);
static_assert(offsetof(ReceiverRecord, audioHighHz) == 180 && offsetof(ReceiverRecord, section184) == 184);
static_assert(offsetof(ReceiverRecord, section188) == 188 && offsetof(ReceiverRecord, featureFlags) == 192);
static_assert(offsetof(ReceiverRecord, section196) == 196 && offsetof(ReceiverRecord, squelchTypes) == 200);
static_assert(offsetof(ReceiverRecord, squelchLevelMin) == 212);
static_assert(offsetof(ReceiverRecord, squelchLevelMax) == 216);
static_assert(offsetof(ReceiverRecord, count224) == 220 && offsetof(ReceiverRecord, section224) == 224);
static_assert(offsetof(ReceiverRecord, modeCount) == 228 && offsetof(ReceiverRecord, modeTable) == 236);
static_assert(offsetof(ReceiverRecord, section264) == 264 && offsetof(ReceiverRecord, volumeMax) == 276);
static_assert(offsetof(ReceiverRecord, volumeStep) == 280 && offsetof(ReceiverRecord, section308) == 308);
static_assert(offsetof(ReceiverRecord, section316) == 316 && offsetof(ReceiverRecord, count324) == 320);
static_assert(offsetof(ReceiverRecord, section324) == 324 && offsetof(ReceiverRecord, count336) == 328);
static_assert(offsetof(ReceiverRecord, section336) == 336 && offsetof(ReceiverRecord, section360) == 360);
static_assert(offsetof(ReceiverRecord, section384) == 384);

/// One mode that the plug-in offers. What the fields after the first mean is the host's.
struct ModeEntry {
    std::uint32_t mode; ///< `ModeNumber`
    std::uint32_t fields[6];
};
static_assert(sizeof(ModeEntry) == 28);

/// Bits of `featureFlags`: set at the start, and what is left of the flags at the close.
constexpr std::uint32_t kFeatureDemodulator = 0x10000000U;
constexpr std::uint32_t kFeaturesLeftAtClose = 0xEFFFFFBFU;

/// What a plug-in library exports, under these very names.
using ZemPluginInit = std::uint32_t(ORVA_HOST_CALL*)(std::uint32_t reserved1, std::uint32_t reserved2,
                                                     char* nameBuffer, std::int32_t nameBufferSize);
using ZemPluginStart = std::uint32_t(ORVA_HOST_CALL*)(std::uint32_t hostHandle, ReceiverRecord* record,
                                                      ZemHostCallback callback, std::uint32_t reserved);
using ZemPluginNotify = void(ORVA_HOST_CALL*)(std::uint32_t hostHandle, std::int32_t code,
                                              std::uint32_t param, std::uint32_t size, void* data);
using ZemPluginDone = void(ORVA_HOST_CALL*)();

} // namespace orva::plugin
