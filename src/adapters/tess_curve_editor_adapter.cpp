#include "adapters/tess_curve_editor_adapter.hpp"

#include "adapters/adapter_arguments.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/tess/assemblage.hpp"

#include <algorithm>
#include <cmath>
#include <string>

namespace qoraudiofiltersui {

using namespace adapter_arguments;
using qorcore::IntrusivePtr;
using vorlen::any_regular_t;
using vorlen::array_t;
using vorlen::dictionary_t;
using vorlen::name_t;
using vorlen::operator""_name;

namespace {

enum RulerType { kNoRuler = 0, kLinear = 1, kLog = 2, kDecibel = 3, kFader = 4 };

/// One axis's ruler from the arguments with the axis's prefix ("horizontal" or "vertical").
IntrusivePtr<qorui::RulerBase> MakeRuler(const dictionary_t& arguments, const std::string& axis,
                                         double start, double end) {
    const auto key = [&axis](const char* what) {
        return name_t((axis + what).c_str());
    };
    int type = kNoRuler;
    Read(arguments, key("_ruler_type"), type);
    IntrusivePtr<qorui::RulerBase> ruler;
    switch (type) {
    case kLinear: ruler = qorcore::MakeIntrusive<qorui::LinearRuler>(); break;
    case kLog: {
        auto log = qorcore::MakeIntrusive<qorui::LogRuler>();
        double value = 0.0;
        if (Read(arguments, key("_log_step"), value))
            log->SetLogStep(value);
        if (Read(arguments, key("_log_seed"), value))
            log->SetLogSeed(value);
        ruler = log;
        break;
    }
    case kDecibel:
        ruler = qorcore::MakeIntrusive<qorui::DecibelRuler>(qorui::DecibelRuler::kStyleLinear);
        break;
    case kFader:
        ruler = qorcore::MakeIntrusive<qorui::DecibelRuler>(qorui::DecibelRuler::kStyleFader);
        break;
    default: break;
    }
    qorcore::config::ThrowIfNull(ruler.get(), "RulerBase");
    ruler->SetVertical(axis == "vertical");
    ruler->SetValueRange(start, end);
    ruler->SetTextNearTickStart(false);
    ruler->HideTruncatedStrings(true);
    double factor = 0.0;
    if (Read(arguments, key("_step_factor"), factor))
        ruler->SetStepFactor(factor);
    return ruler;
}

std::vector<std::string> ToTexts(const any_regular_t& value) {
    std::vector<std::string> texts;
    for (const any_regular_t& text : value.cast<array_t>())
        texts.push_back(qormarltess::LocalizeString(text.cast<std::string>()));
    return texts;
}

/// Runs `apply` with the value of `key` when the dictionary has it.
template <typename Apply>
void WithKey(const dictionary_t& dictionary, name_t key, Apply apply) {
    const auto found = dictionary.find(key);
    if (found != dictionary.end())
        apply(found->second);
}

/// Marks a stretch of code during which the flag is set.
class FlagScope {
public:
    explicit FlagScope(bool& flag) : flag_(flag), before_(flag) { flag_ = true; }
    ~FlagScope() { flag_ = before_; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

private:
    bool& flag_;
    bool before_;
};

} // namespace

TessCurveEditorAdapter::TessCurveEditorAdapter(const dictionary_t& arguments,
                                               qorui::UI_Node* parent,
                                               const qormarltess::FactoryToken& token)
    : UI_QORClientWidgetTessAdapter(parent, token), afterRound_(token) {
    double horizontalStart = 0.0, horizontalEnd = 0.0, verticalStart = 0.0, verticalEnd = 0.0;
    Read(arguments, "horizontal_start_value"_name, horizontalStart);
    Read(arguments, "horizontal_end_value"_name, horizontalEnd);
    Read(arguments, "vertical_start_value"_name, verticalStart);
    Read(arguments, "vertical_end_value"_name, verticalEnd);
    auto horizontal = MakeRuler(arguments, "horizontal", horizontalStart, horizontalEnd);
    auto vertical = MakeRuler(arguments, "vertical", verticalStart, verticalEnd);

    Read(arguments, "content_width"_name, contentWidth_);
    Read(arguments, "content_height"_name, contentHeight_);
    contentWidth_ = std::max(contentWidth_, kMinContentWidth);
    contentHeight_ = std::max(contentHeight_, kMinContentHeight);

    editor_ = qorcore::MakeIntrusive<CurveEditor>(horizontal, vertical);
    const qorcore::PointT<float> size =
        editor_->GetSizeForContentSize({contentWidth_, contentHeight_});
    editor_->SetFrame({0.0f, 0.0f, size.x, size.y});
    editor_->SetRanges(horizontalStart, horizontalEnd, verticalStart, verticalEnd);
    SetNode(editor_);

    bool flag = false;
    if (Read(arguments, "draw_segment_numbers"_name, flag))
        editor_->SetDrawSegmentNumbers(flag);
    if (Read(arguments, "draw_linear_reference"_name, flag))
        editor_->SetDrawLinearReference(flag);
    if (Read(arguments, "draw_horizontal_minor_ticks"_name, flag))
        editor_->SetDrawHorizontalMinorTicks(flag);
    if (Read(arguments, "draw_vertical_minor_ticks"_name, flag))
        editor_->SetDrawVerticalMinorTicks(flag);
    std::string text;
    if (ReadText(arguments, "horizontal_label1"_name, text))
        editor_->SetHorizontalLabel1(text);
    if (ReadText(arguments, "horizontal_label2"_name, text))
        editor_->SetHorizontalLabel2(text);
    if (ReadText(arguments, "vertical_label1"_name, text))
        editor_->SetVerticalLabel1(text);
    if (ReadText(arguments, "vertical_label2"_name, text))
        editor_->SetVerticalLabel2(text);
    if (ReadText(arguments, "horizontal_edit_label"_name, text))
        editor_->SetHorizontalEditDialogLabel(text);
    if (ReadText(arguments, "vertical_edit_label"_name, text))
        editor_->SetVerticalEditDialogLabel(text);
    if (vorlen::get_value(arguments, "identifier"_name, text))
        UI_SetNodeID(text);
    AddToParent();

    qormarltess::Assemblage& assemblage = token.GetAssemblage();
    selectedCell_ = Cell(arguments, "selected_node"_name);
    if (selectedCell_)
        assemblage.BindView(selectedCell_,
                            [this](const any_regular_t& value) { ApplySelectedNode(value); });
    if (const name_t cell = Cell(arguments, "bind_response"_name))
        assemblage.BindView(cell, [this](const any_regular_t& value) { ApplyResponse(value); });
    if (const name_t cell = Cell(arguments, "settings"_name))
        assemblage.BindView(cell, [this](const any_regular_t& value) { ApplySettings(value); });
    if (const name_t cell = Cell(arguments, "command"_name)) {
        assemblage.BindView(cell, [this](const any_regular_t& value) { ApplyCommand(value); });
        commandsArmed_ = true;
    }
    pointsCell_ = Cell(arguments, "bind"_name);
    if (pointsCell_) {
        if (!token.FindSheet(pointsCell_))
            throw std::logic_error(std::string("no cell named '") + pointsCell_.c_str() +
                                   "' to bind");
        assemblage.BindView(pointsCell_,
                            [this](const any_regular_t& value) { ApplyPoints(value); });
    }

    // Held by the assemblage, so that the editor, which may outlive this adapter in its tree,
    // stops calling it when the view's bindings end.
    assemblage.Hold(editor_->ConnectChangedInteractively(
        [this](const qorui::UI_InteractiveControlChangedMessage&) { WritePoints(); }));
    assemblage.Hold(
        editor_->ConnectSelectionChanged([this](int index) { OnSelectionChanged(index); }));
}

TessCurveEditorAdapter::~TessCurveEditorAdapter() = default;

std::pair<int, int> TessCurveEditorAdapter::GetNaturalSize() const {
    const qorcore::PointT<float> size =
        editor_->GetSizeForContentSize({contentWidth_, contentHeight_});
    return {int(std::ceil(size.x)), int(std::ceil(size.y))};
}

void TessCurveEditorAdapter::ApplyPoints(const any_regular_t& value) {
    // Our own write coming back through the sheet: the editor has these points already.
    if (isWriting_ && value == writing_)
        return;
    if (value.is<vorlen::empty_t>())
        return;
    const dictionary_t& cell = value.cast<dictionary_t>();
    CurveEditor::CurvePoints points;
    for (const auto& [horizontal, vertical] : ReadCurvePoints(cell))
        points.emplace_back(std::uint32_t(points.size()), horizontal, vertical);
    const array_t& pairs = vorlen::get_value(cell, "curve_points"_name).cast<array_t>();
    const int selected = editor_->GetSelectedNode();
    {
        FlagScope applying(applying_);
        editor_->SetMaxPointCount(pairs.size());
        editor_->SetCurvePoints(points);
    }
    points_ = points;
    pairs_ = pairs;
    // Fewer points may have taken the selection with them; the cell hears of it after the round.
    if (editor_->GetSelectedNode() != selected) {
        const int now = editor_->GetSelectedNode();
        afterRound_.Post([this, now] { OnSelectionChanged(now); });
    }
}

void TessCurveEditorAdapter::WritePoints() {
    if (!pointsCell_ || applying_)
        return;
    const CurveEditor::CurvePoints& points = editor_->GetCurvePoints();
    if (points == points_)
        return;
    array_t pairs;
    for (const CurveEditor::CurvePoint& point : points)
        pairs.emplace_back(
            array_t{any_regular_t(point.position.first), any_regular_t(point.position.second)});
    // The array keeps its length, the most points there may be: the pairs past the active ones
    // stay as the cell had them.
    const std::size_t length = std::max(editor_->GetMaxPointCount(), points.size());
    for (std::size_t i = pairs.size(); i < length; ++i)
        pairs.push_back(i < pairs_.size()
                            ? pairs_[i]
                            : any_regular_t(array_t{any_regular_t(0.0), any_regular_t(0.0)}));
    dictionary_t cell;
    cell["curve_points"_name] = any_regular_t(pairs);
    cell["num_active_points"_name] = any_regular_t(double(points.size()));
    points_ = points;
    pairs_ = pairs;
    writing_ = any_regular_t(cell);
    FlagScope writing(isWriting_);
    GetToken().GetAssemblage().SetCell(pointsCell_, writing_);
}

void TessCurveEditorAdapter::ApplyResponse(const any_regular_t& value) {
    std::vector<double> data;
    if (!value.is<vorlen::empty_t>())
        for (const any_regular_t& number : value.cast<array_t>())
            data.push_back(number.cast<double>());
    editor_->SetResponseData(data, 0);
}

void TessCurveEditorAdapter::ApplySelectedNode(const any_regular_t& value) {
    const int index = value.is<vorlen::empty_t>() ? -1 : int(value.cast<double>());
    if (index == editor_->GetSelectedNode())
        return;
    FlagScope applying(applying_);
    editor_->SetSelectedNode(index);
}

void TessCurveEditorAdapter::OnSelectionChanged(int index) {
    if (!selectedCell_ || applying_)
        return;
    GetToken().GetAssemblage().SetCell(selectedCell_, any_regular_t(double(index)));
}

void TessCurveEditorAdapter::ApplySettings(const any_regular_t& value) {
    if (value.is<vorlen::empty_t>())
        return;
    const dictionary_t& settings = value.cast<dictionary_t>();
    FlagScope applying(applying_);
    WithKey(settings, "visible"_name,
            [this](const any_regular_t& v) { editor_->SetVisiblePoints(ToFlags(v)); });
    WithKey(settings, "can_delete"_name,
            [this](const any_regular_t& v) { editor_->SetDeletablePoints(ToFlags(v)); });
    WithKey(settings, "can_move_horizontally"_name,
            [this](const any_regular_t& v) { editor_->SetMoveablePoints(ToFlags(v), true); });
    WithKey(settings, "can_move_vertically"_name,
            [this](const any_regular_t& v) { editor_->SetMoveablePoints(ToFlags(v), false); });
    WithKey(settings, "unique_horizontal"_name, [this](const any_regular_t& v) {
        editor_->SetUniqueHorizontalPositions(v.cast<bool>());
    });
    WithKey(settings, "horizontal_unit"_name, [this](const any_regular_t& v) {
        editor_->SetHorizontalEditDialogUnit(qormarltess::LocalizeString(v.cast<std::string>()));
    });
    WithKey(settings, "vertical_unit"_name, [this](const any_regular_t& v) {
        editor_->SetVerticalEditDialogUnit(qormarltess::LocalizeString(v.cast<std::string>()));
    });
    WithKey(settings, "labels"_name,
            [this](const any_regular_t& v) { editor_->SetPointLabels(ToTexts(v)); });
    WithKey(settings, "grid_color"_name, [this](const any_regular_t& v) {
        editor_->SetGridColor(ToColor(v.cast<dictionary_t>()));
    });
    WithKey(settings, "horizontal_font_size"_name, [this](const any_regular_t& v) {
        editor_->SetHorizontalRulerFontSize(float(v.cast<double>()));
    });
    WithKey(settings, "vertical_font_size"_name, [this](const any_regular_t& v) {
        editor_->SetVerticalRulerFontSize(float(v.cast<double>()));
    });
    WithKey(settings, "ruler_ranges"_name,
            [this](const any_regular_t& v) { ApplyRulerRanges(v.cast<dictionary_t>()); });
}

void TessCurveEditorAdapter::ApplyRulerRanges(const dictionary_t& ranges) {
    double horizontalStart = editor_->GetHorizontalStart();
    double horizontalEnd = editor_->GetHorizontalEnd();
    double verticalStart = editor_->GetVerticalStart();
    double verticalEnd = editor_->GetVerticalEnd();
    Read(ranges, "horizontal_start"_name, horizontalStart);
    Read(ranges, "horizontal_end"_name, horizontalEnd);
    Read(ranges, "vertical_start"_name, verticalStart);
    Read(ranges, "vertical_end"_name, verticalEnd);
    // The vertical bounds may reach past the range shown, so that the user can scroll there;
    // they run the way the range does.
    double verticalMin = std::min(verticalStart, verticalEnd);
    double verticalMax = std::max(verticalStart, verticalEnd);
    Read(ranges, "vertical_min"_name, verticalMin);
    Read(ranges, "vertical_max"_name, verticalMax);
    const bool descending = verticalStart > verticalEnd;
    editor_->SetRangeBounds(horizontalStart, horizontalEnd, descending ? verticalMax : verticalMin,
                            descending ? verticalMin : verticalMax);
    editor_->SetCurrentRange(horizontalStart, horizontalEnd, verticalStart, verticalEnd);
}

void TessCurveEditorAdapter::ApplyCommand(const any_regular_t& value) {
    // The cell's value when the view is built is no request of the user's.
    if (!commandsArmed_ || value.is<vorlen::empty_t>())
        return;
    name_t command;
    Read(value.cast<dictionary_t>(), "command"_name, command);
    if (command != name_t("invert"_name) && command != name_t("add_node"_name) &&
        command != name_t("delete_node"_name))
        return;
    // A command may ask the user and then writes the points: not inside the sheet's round.
    afterRound_.Post([this, command] {
        bool changed = false;
        if (command == name_t("invert"_name))
            changed = editor_->Invert();
        else if (command == name_t("add_node"_name))
            changed = editor_->AddNewPoint();
        else
            changed = editor_->DeleteSelectedPoints();
        if (changed)
            WritePoints();
    });
}

} // namespace qoraudiofiltersui
