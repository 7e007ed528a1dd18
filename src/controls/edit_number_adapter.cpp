#include "controls/edit_number_adapter.hpp"

#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace qoraudiofiltersui {

using qorcore::IntrusivePtr;
using qorui::NodeArchiveSection;
using qorui::NodeArchiveValue;

namespace {

enum RulerType {
    kRulerNone = 0,
    kRulerLinear = 1,
    kRulerLog = 2,
    kRulerDecibel = 3,
    kRulerFader = 4
};

/// Typed reads of one section; a value of the wrong type is reported and reads as absent.
class SectionReader {
public:
    explicit SectionReader(const NodeArchiveSection& section) : section_(section) {}

    std::optional<bool> Bool(std::string_view key) const {
        return Read<bool>(key, "a boolean", [](const NodeArchiveValue& v) { return v.GetBool(); });
    }
    std::optional<double> Number(std::string_view key) const {
        return Read<double>(key, "a number",
                            [](const NodeArchiveValue& v) { return v.GetNumber(); });
    }
    std::optional<std::string> String(std::string_view key) const {
        return Read<std::string>(key, "a string", [](const NodeArchiveValue& v) {
            return v.GetString() ? std::optional<std::string>(*v.GetString()) : std::nullopt;
        });
    }
    /// The selected index of an enumeration, checked against `count` items.
    std::optional<int> Selected(std::string_view key, int count) const {
        const auto selected = Read<int>(
            key, "an enumeration", [](const NodeArchiveValue& v) { return v.GetEnumSelected(); });
        if (selected && (*selected < 0 || *selected >= count)) {
            section_.Report(key, "selected " + std::to_string(*selected) + " is not one of the " +
                                     std::to_string(count) + " items");
            return std::nullopt;
        }
        return selected;
    }
    void Report(std::string_view key, const std::string& message) const {
        section_.Report(key, message);
    }

private:
    template <class T, class Get>
    std::optional<T> Read(std::string_view key, const char* what, Get get) const {
        const NodeArchiveValue* value = section_.Find(key);
        if (!value)
            return std::nullopt;
        if (auto read = get(*value))
            return T(*read);
        section_.Report(key, std::string("expected ") + what);
        return std::nullopt;
    }

    const NodeArchiveSection& section_;
};

/// Runs a ruler setter that refuses bad numbers by exception, reporting the refusal.
template <class F>
void Try(const SectionReader& read, std::string_view key, F&& apply) {
    try {
        apply();
    } catch (const std::invalid_argument& e) {
        read.Report(key, e.what());
    }
}

IntrusivePtr<qorui::RulerBase> MakeRuler(const SectionReader& read, int type, double value1,
                                         double value2) {
    IntrusivePtr<qorui::RulerBase> ruler;
    switch (type) {
    case kRulerLinear: ruler = qorcore::MakeIntrusive<qorui::LinearRuler>(); break;
    case kRulerLog: {
        auto log = qorcore::MakeIntrusive<qorui::LogRuler>();
        if (const auto step = read.Number("logStep"))
            Try(read, "logStep", [&] { log->SetLogStep(*step); });
        if (const auto seed = read.Number("logSeed"))
            Try(read, "logSeed", [&] { log->SetLogSeed(*seed); });
        ruler = log;
        break;
    }
    case kRulerDecibel:
        ruler = qorcore::MakeIntrusive<qorui::DecibelRuler>(qorui::DecibelRuler::kStyleLinear);
        break;
    case kRulerFader:
        ruler = qorcore::MakeIntrusive<qorui::DecibelRuler>(qorui::DecibelRuler::kStyleFader);
        break;
    default: return nullptr;
    }
    bool ranged = true;
    Try(read, "rulerType", [&] {
        ranged = false;
        ruler->SetValueRange(value1, value2);
        ranged = true;
    });
    if (!ranged)
        return nullptr;
    if (const auto factor = read.Number("stepFactor"))
        Try(read, "stepFactor", [&] { ruler->SetStepFactor(*factor); });
    if (const auto abbreviate = read.Bool("abbreviateNumbers"))
        ruler->SetAbbreviateNumbers(*abbreviate);
    if (const auto label = read.String("rulerLabel1"))
        ruler->SetLabel1(*label);
    if (const auto label = read.String("rulerLabel2"))
        ruler->SetLabel2(*label);
    ruler->HideTruncatedStrings(true);
    return ruler;
}

} // namespace

const std::vector<std::string_view>& EditNumberAdapter::GetPropertyNames() {
    static const std::vector<std::string_view> names = {"label",
                                                        "useLabel",
                                                        "minValue",
                                                        "maxValue",
                                                        "rulerType",
                                                        "rulerPlacement",
                                                        "rulerTextPlacement",
                                                        "rulerLabel1",
                                                        "rulerLabel2",
                                                        "stepFactor",
                                                        "logStep",
                                                        "logSeed",
                                                        "abbreviateNumbers",
                                                        "decimalPlaces",
                                                        "digits",
                                                        "increment",
                                                        "unitLabel",
                                                        "unitLabelLength",
                                                        "useInline",
                                                        "logarithmic"};
    return names;
}

IntrusivePtr<EditNumber> EditNumberAdapter::CreateNode() const {
    return qorcore::MakeIntrusive<EditNumber>(true, true, true, false, kSliderKnobArrowUpLeft);
}

IntrusivePtr<EditNumber> EditNumberAdapter_Horizontal::CreateNode() const {
    auto control =
        qorcore::MakeIntrusive<EditNumber>(true, false, true, false, kSliderKnobArrowUpLeft);
    control->SetHotTextNumberAlignment(qorui::penrig::HorizontalAlignment::kRight);
    control->SetUnitLabelLength(40);
    control->SetFrame({0, 0, 300, 20});
    return control;
}

IntrusivePtr<EditNumber> EditNumberAdapter_Vertical::CreateNode() const {
    auto control = qorcore::MakeIntrusive<EditNumber>(false, false, true, false,
                                                      kSliderKnobArrowBidirectional);
    control->SetLabel("Label");
    control->SetHotTextNumberAlignment(qorui::penrig::HorizontalAlignment::kCenter);
    control->SetFrame({0, 0, 30, 280});
    return control;
}

void EditNumberAdapter::ApplySection(EditNumber& control, const NodeArchiveSection& section) {
    const SectionReader read(section);
    if (const auto uses = read.Bool("useLabel"))
        control.SetUsesLabel(*uses);
    if (const auto label = read.String("label"))
        control.SetLabel(*label);
    if (const auto inline_ = read.Bool("useInline"))
        control.SetUsesInline(*inline_);
    if (const auto unit = read.String("unitLabel"))
        control.SetUnitLabel(*unit);
    if (const auto length = read.Number("unitLabelLength")) {
        if (*length >= 0 && *length <= 4096)
            control.SetUnitLabelLength(std::uint32_t(*length));
        else
            read.Report("unitLabelLength", "a length from 0 to 4096 is expected");
    }
    if (const auto places = read.Number("decimalPlaces"))
        control.SetDecimalPlaces(int(std::clamp(*places, 0.0, 15.0)));
    if (const auto digits = read.Number("digits"))
        control.SetDigits(int(std::clamp(*digits, 0.0, 32.0)));
    if (const auto increment = read.Number("increment")) {
        if (*increment > 0)
            control.SetIncrement(*increment);
        else
            read.Report("increment", "the increment must be above zero");
    }
    if (const auto logarithmic = read.Bool("logarithmic"))
        control.SetSliderLogarithmic(*logarithmic);

    double min = control.GetMinValue();
    double max = control.GetMaxValue();
    if (const auto v = read.Number("minValue"))
        min = *v;
    if (const auto v = read.Number("maxValue"))
        max = *v;
    if (min > max) {
        // The archive names the slider's ends; a falling range is an inverted slider.
        std::swap(min, max);
        control.SetInvertSlider(true);
    }
    control.SetMinMaxValue(min, max, control.GetValue());

    const int type = read.Selected("rulerType", 5).value_or(kRulerNone);
    if (type != kRulerNone) {
        if (!control.GetUsesSlider()) {
            read.Report("rulerType", "a ruler needs the slider");
        } else {
            // The ruler's first value sits where the slider's value 0 is.
            const bool invert = control.GetInvertSlider();
            IntrusivePtr<qorui::RulerBase> ruler =
                MakeRuler(read, type, invert ? max : min, invert ? min : max);
            if (ruler) {
                ruler->SetVertical(!control.IsHorizontal());
                const auto placement = RulerPlacement(
                    read.Selected("rulerPlacement", 3).value_or(kRulerPlacementLeftTop));
                const auto text = RulerTextPlacement(
                    read.Selected("rulerTextPlacement", 3).value_or(kRulerTextPlacementNone));
                control.SetRuler(std::move(ruler), placement, text);
            }
        }
    }
    control.RecalcLayout();
}

void RegisterEditNumberAdapters() {
    static const bool registered = [] {
        auto enter = [](std::shared_ptr<const EditNumberAdapter> adapter) {
            const std::string name = adapter->GetClassName();
            qorui::UI_NodeBuilder::RegisterAdapter(
                name, [adapter] { return IntrusivePtr<qorui::UI_Node>(adapter->CreateNode()); });
        };
        enter(std::make_shared<EditNumberAdapter>());
        enter(std::make_shared<EditNumberAdapter_Horizontal>());
        enter(std::make_shared<EditNumberAdapter_Vertical>());
        qorui::UI_NodeBuilder::RegisterSectionApplier(
            EditNumberAdapter::kClassName,
            [](qorui::UI_Node& node, const NodeArchiveSection& section) {
                if (auto* control = dynamic_cast<EditNumber*>(&node))
                    EditNumberAdapter::ApplySection(*control, section);
            });
        return true;
    }();
    (void)registered;
}

} // namespace qoraudiofiltersui
