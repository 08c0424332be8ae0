/// Colours and border that a control shares with the controls created under it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orva::toolkit {

class TmyControl;

/// Indexes of the values of a style. Colours are the platform's, 0x00bbggrr.
enum class StyleValue : std::uint32_t {
    WindowColor = 0,
    BackColor = 1,
    TextColor = 2,
    DisabledTextColor = 3,
    BorderWidth = 4, ///< [pixels]
    BorderStyle = 5,
    Brightness = 6, ///< [percent]
    Shadow = 7,     ///< of the panels' text: 0 none, 127 chosen by the brightness
    Reserved = 8,
};

constexpr std::size_t kStyleValueCount = 9;

/// One record of style values with the controls that share it. It belongs to them together: the last to leave
/// deletes it.
class ControlStyle {
public:
    /// Keeps a record from being deleted while its controls are told of a change.
    class Keeper {
    public:
        explicit Keeper(ControlStyle* keptStyle) : style(keptStyle) { ++style->keepers; }
        ~Keeper() {
            --style->keepers;
            style->DeleteIfUnused();
        }
        Keeper(const Keeper&) = delete;
        Keeper& operator=(const Keeper&) = delete;
        const ControlStyle* operator->() const { return style; }

    private:
        ControlStyle* style;
    };

    /// A root's style.
    ControlStyle() = default;
    ControlStyle(const ControlStyle&) = delete;
    ControlStyle& operator=(const ControlStyle&) = delete;

    /// A record of its own with the same values, and no control yet.
    [[nodiscard]] ControlStyle* Copy() const;

    void Join(TmyControl* control);
    /// Takes the control off the record; deletes the record if it was the last.
    void Leave(TmyControl* control);

    [[nodiscard]] std::uint32_t Get(StyleValue index) const {
        return values[static_cast<std::size_t>(index)];
    }
    void Set(StyleValue index, std::uint32_t value) { values[static_cast<std::size_t>(index)] = value; }

    [[nodiscard]] bool IsSharedBy(const TmyControl* control) const;
    [[nodiscard]] const std::vector<TmyControl*>& Sharers() const { return sharers; }

private:
    ~ControlStyle() = default;
    void DeleteIfUnused();

    std::vector<TmyControl*> sharers;
    int keepers = 0;
    std::array<std::uint32_t, kStyleValueCount> values{0x636363, 0,   0xFFFFFF, 0x888888,  3,
                                                       0,        100, 0,        0xFF000000};
};

} // namespace orva::toolkit
