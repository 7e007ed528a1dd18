// The leaf widgets of a layout: `radio_button`, `checkbox`, `static_text`, `display_text`,
// `button`, `toggle_button`, `popup`, `knob`, `slider`, `separator`, `image` and
// `inline_edit_number`, each a control of the toolkit bound to its cell through the assemblage.

#include "platform/panels/ui_divider.hpp"
#include "platform/panels/ui_image_view.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/tess/assemblage.hpp"
#include "platform/tess/tess_widgets.hpp"
#include "platform/ui/ui_sub_view.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_knob.hpp"
#include "platform/widgets/ui_picture_button.hpp"
#include "platform/widgets/ui_popup.hpp"
#include "platform/widgets/ui_radio_button.hpp"
#include "platform/widgets/ui_radio_group.hpp"
#include "platform/widgets/ui_slider.hpp"
#include "platform/widgets/ui_text_button.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qormarltess {

namespace {

using namespace widget_support;
using qorui::UI_ControlChangedMessage;
using qorui::UI_InteractiveControlChangedMessage;
using vorlen::any_regular_t;
using vorlen::dictionary_t;
using vorlen::name_t;
using vorlen::operator""_name;

constexpr int kControlHeight = 22;
// A check mark sits one pixel in, its caption five pixels after it.
constexpr int kCheckMarkSpace = 1 + int(qorui::UI_Checkbox::kBoxSize) + 5;

/// A leaf whose natural size is known when it is made.
class LeafAdapter : public UI_TessNodeAdapterBase {
public:
    using UI_TessNodeAdapterBase::UI_TessNodeAdapterBase;

protected:
    void SetNaturalSize(int width, int height) { natural_ = {width, height}; }
    std::pair<int, int> GetNaturalSize() const override { return natural_; }

private:
    std::pair<int, int> natural_{0, 0};
};

/// A number cell read as the control shows it; an empty value leaves the control unknown.
void ShowNumber(qorui::UI_ControlView& control, const any_regular_t& value) {
    if (value.is<double>())
        control.SetValue(value.cast<double>());
    else if (value.is<vorlen::empty_t>())
        control.SetValueUnknown();
    else
        throw std::runtime_error("value must be bound to either a number or an empty_t");
}

/// Two-state controls (checkbox, toggle button): the cell holds a boolean.
void BindOnOff(qorui::UI_Button& control, name_t cell, const FactoryToken& token) {
    if (!cell)
        return;
    Assemblage* assemblage = &token.GetAssemblage();
    qorui::UI_Button* raw = &control;
    assemblage->BindView(
        cell, [raw](const any_regular_t& value) { raw->SetValue(IsOn(value) ? 1.0 : 0.0); });
    control.NotifyWhenChanged([assemblage, cell, raw](const UI_ControlChangedMessage&) {
        assemblage->SetCell(cell, any_regular_t(raw->GetValue() >= 0.5));
    });
    BindEnabled(token, cell, raw);
}

/// Interactive number controls write the cell on every step of a gesture, so that what depends
/// on it follows the drag.
void BindInteractiveNumber(qorui::UI_InteractiveControlView& control, name_t cell,
                           const FactoryToken& token,
                           std::function<double(double)> toCell = nullptr,
                           std::function<double(double)> fromCell = nullptr) {
    if (!cell)
        return;
    Assemblage* assemblage = &token.GetAssemblage();
    qorui::UI_InteractiveControlView* raw = &control;
    assemblage->BindView(cell, [raw, fromCell](const any_regular_t& value) {
        if (value.is<double>() && fromCell)
            raw->SetValue(fromCell(value.cast<double>()));
        else
            ShowNumber(*raw, value);
    });
    control.NotifyWhenChangedInteractively([assemblage, cell, raw, toCell](
                                               const UI_InteractiveControlChangedMessage& message) {
        if (message.GetChangeMessage() == qorui::kInteractiveChangeCancel && raw->IsValueUnknown())
            return;
        const double value = toCell ? toCell(raw->GetValue()) : raw->GetValue();
        assemblage->SetCell(cell, any_regular_t(value));
    });
    BindEnabled(token, cell, raw);
}

class RadioButtonAdapter : public LeafAdapter {
public:
    RadioButtonAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : LeafAdapter(parent, token) {
        const std::string text = Text(arguments, "name"_name);
        auto button = IntrusivePtr<qorui::UI_RadioButton>(new qorui::UI_RadioButton(text));
        SetNode(button);
        bool buttonStyle = false;
        vorlen::get_value(arguments, "button_style"_name, buttonStyle);
        if (buttonStyle) {
            button->SetButtonStyle(true);
            SetNaturalSize(int(button->GetButtonStyleWidth()), kControlHeight);
        } else {
            const auto [width, height] = TextSize(text, qorui::control_drawing::GetControlFont());
            SetNaturalSize(kCheckMarkSpace + width + 1,
                           std::max(int(qorui::UI_Checkbox::kBoxSize) + 2, height));
        }
        // Inside a radio group the group keeps the buttons exclusive.
        if (auto* group = dynamic_cast<qorui::UI_RadioGroup*>(parent))
            group->AddRadioButton(button);

        const name_t cell = Cell(arguments, "bind"_name);
        any_regular_t value;
        if (!cell || !vorlen::get_value(arguments, "value"_name, value))
            return;
        Assemblage* assemblage = &token.GetAssemblage();
        qorui::UI_RadioButton* raw = button.get();
        auto* group = dynamic_cast<qorui::UI_RadioGroup*>(parent);
        assemblage->BindView(cell, [raw, group, value](const any_regular_t& current) {
            if (current != value) {
                raw->SetValue(0.0);
                return;
            }
            if (!group) {
                raw->SetValue(1.0);
                return;
            }
            for (std::size_t i = 0; i != group->GetRadioButtonCount(); ++i)
                if (group->GetRadioButtonAt(i) == raw)
                    group->SetValue(double(i));
        });
        button->NotifyWhenChanged([assemblage, cell, raw, value](const UI_ControlChangedMessage&) {
            if (raw->IsChecked())
                assemblage->SetCell(cell, value);
        });
        BindEnabled(token, cell, raw);
    }
};

class CheckboxAdapter : public LeafAdapter {
public:
    CheckboxAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : LeafAdapter(parent, token) {
        const std::string text = Text(arguments, "name"_name);
        auto box = IntrusivePtr<qorui::UI_Checkbox>(new qorui::UI_Checkbox(text));
        SetNode(box);
        const auto [width, height] = TextSize(text, qorui::control_drawing::GetControlFont());
        SetNaturalSize(text.empty() ? int(qorui::UI_Checkbox::kBoxSize) + 2
                                    : kCheckMarkSpace + width + 1,
                       std::max(int(qorui::UI_Checkbox::kBoxSize) + 2, height));
        BindOnOff(*box, Cell(arguments, "bind"_name), token);
    }
};

/// `static_text` shows its `name`; `display_text` shows its `value`, or the cell that `value`
/// or `bind` names.
class TextAdapter : public LeafAdapter {
public:
    TextAdapter(bool display, const dictionary_t& arguments, UI_Node* parent,
                const FactoryToken& token)
        : LeafAdapter(parent, token) {
        text_ = IntrusivePtr<qorui::UI_StaticText>(new qorui::UI_StaticText);
        SetNode(text_);
        // A text that changes (a live value) is sized for its `placeholder`, in its own size.
        double fontSize = 0;
        bool bold = false;
        vorlen::get_value(arguments, "font_size"_name, fontSize);
        vorlen::get_value(arguments, "bold"_name, bold);
        if ((fontSize > 0 && fontSize < 200) || bold) {
            qorui::penrig::Font font = text_->GetFont();
            if (fontSize > 0 && fontSize < 200)
                font.size = float(fontSize);
            font.bold = bold;
            text_->SetFont(font);
        }
        placeholder_ = Text(arguments, "placeholder"_name);
        std::string shown = Text(arguments, "name"_name);
        name_t cell = Cell(arguments, "bind"_name);
        if (display) {
            any_regular_t value;
            if (vorlen::get_value(arguments, "value"_name, value)) {
                if (value.is<name_t>())
                    cell = value.cast<name_t>();
                else
                    shown = value.is<std::string>() ? LocalizeString(value.cast<std::string>())
                                                    : DisplayText(value);
            }
        }
        text_->SetText(shown);
        Measure(shown);
        if (cell) {
            qorui::UI_StaticText* raw = text_.get();
            token.GetAssemblage().BindView(
                cell, [raw](const any_regular_t& value) { raw->SetText(DisplayText(value)); });
            Measure(text_->GetText());
        }
    }

private:
    void Measure(const std::string& text) {
        const auto [width, height] = TextSize(text, text_->GetFont());
        const int reserved =
            placeholder_.empty() ? 0 : TextSize(placeholder_, text_->GetFont()).first;
        SetNaturalSize(std::max(width, reserved) + 1, height);
    }

    IntrusivePtr<qorui::UI_StaticText> text_;
    std::string placeholder_;
};

/// A push button writes `value` (or, without one, the value of its `bind` cell) to
/// `bind_output`, or to `bind` when there is no `bind_output`.
class ButtonAdapter : public LeafAdapter {
public:
    ButtonAdapter(bool toggle, const dictionary_t& arguments, UI_Node* parent,
                  const FactoryToken& token)
        : LeafAdapter(parent, token) {
        const std::string imageName = Text(arguments, "image"_name);
        const std::string text = Text(arguments, "name"_name);
        IntrusivePtr<qorui::UI_Button> button;
        if (!imageName.empty()) {
            auto picture = IntrusivePtr<qorui::UI_PictureButton>(new qorui::UI_PictureButton);
            picture->SetDrawsFace(true);
            auto image = token.GetImage(imageName);
            if (image) {
                SetNaturalSize(int(std::ceil(image->GetWidth())) + 8,
                               int(std::ceil(image->GetHeight())) + 6);
                picture->SetImages(image);
            } else {
                SetNaturalSize(kControlHeight, kControlHeight);
            }
            button = picture;
        } else {
            auto textButton = IntrusivePtr<qorui::UI_TextButton>(
                toggle ? new qorui::UI_ToggleButton(text) : new qorui::UI_TextButton(text));
            SetNaturalSize(int(std::ceil(textButton->GetBestWidth())), kControlHeight);
            button = textButton;
        }
        if (toggle)
            button->SetButtonBehavior(qorui::UI_Button::kButtonBehaviorToggle);
        SetNode(button);

        const name_t cell = Cell(arguments, "bind"_name);
        if (toggle) {
            BindOnOff(*button, cell, token);
            return;
        }
        const name_t output = Cell(arguments, "bind_output"_name);
        auto value = std::make_shared<any_regular_t>();
        const bool hasValue = vorlen::get_value(arguments, "value"_name, *value);
        const name_t target = output ? output : (hasValue ? cell : name_t());
        if (!target)
            return;
        Assemblage* assemblage = &token.GetAssemblage();
        if (!hasValue && cell)
            assemblage->BindView(cell, [value](const any_regular_t& current) { *value = current; });
        button->NotifyWhenChanged([assemblage, target, value](const UI_ControlChangedMessage&) {
            assemblage->SetCell(target, *value);
        });
        BindEnabled(token, target, button.get());
    }
};

constexpr const char* kCustomItemText = "$$$/qoraudiofiltersui/Popup/Custom=Custom";
// The letters whose mean width is a font's average character.
constexpr std::string_view kAverageCharSample =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// A name written either as `@name` or as a string; the empty name for "" or when absent.
name_t NameOrText(const dictionary_t& arguments, name_t key) {
    const auto found = arguments.find(key);
    if (found == arguments.end())
        return {};
    if (found->second.is<name_t>())
        return found->second.cast<name_t>();
    if (found->second.is<std::string>())
        return name_t(found->second.cast<std::string>().c_str());
    throw std::runtime_error(std::string("'") + key.c_str() + "' must be a name or a string");
}

/// A size argument in pixels, cut to what a float holds; 0 when absent or not a number. The
/// toolkit takes a size that is not positive as its own default.
float Size(const dictionary_t& arguments, name_t key) {
    const double size = Number(arguments, key, 0);
    return std::isnan(size) ? 0.0f : float(std::clamp(size, -1e6, 1e6));
}

/// A cell named with `@cell`; "" (as scripts write for none) or absence give the empty name.
name_t OptionalCell(const dictionary_t& arguments, name_t key) {
    const auto found = arguments.find(key);
    if (found != arguments.end() && found->second.is<std::string>() &&
        found->second.cast<std::string>().empty())
        return {};
    return Cell(arguments, key);
}

/// A popup of `items` ({name, value, icon, action, bind_output}); the cell holds the chosen
/// item's value. An item with an `action` is a command: choosing it writes the action as a name
/// to its `bind_output` cell, or the popup's, and leaves the value alone. The natural width is
/// the widest item's, or with a `measureStrategy` other than 'maxItem' the first item's, its
/// text cut at `popup_maximum_width_chars` average characters. The `iconpopup_...` arguments
/// measure the icon column and the menu's rows.
class PopupAdapter : public LeafAdapter {
public:
    PopupAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : LeafAdapter(parent, token) {
        popup_ = IntrusivePtr<qorui::UI_Popup>(new qorui::UI_Popup);
        SetNode(popup_);
        ReadLook(arguments);
        ReadItems(arguments, token);
        if (Boolean(arguments, "include_custom_item"_name, false))
            popup_->SetCustomItemText(LocalizeString(kCustomItemText));
        popup_->SetSearchable(Boolean(arguments, "is_searchable"_name, false));
        Measure(arguments);

        Assemblage* assemblage = &token.GetAssemblage();
        popup_->SetCommandHandler([this, assemblage](int index) {
            const Action& action = actions_[std::size_t(index)];
            if (action.target)
                assemblage->SetCell(action.target, any_regular_t(action.name));
        });
        const name_t cell = OptionalCell(arguments, "bind"_name);
        if (!cell)
            return;
        assemblage->BindView(cell, [this](const any_regular_t& current) {
            if (current.is<vorlen::empty_t>())
                popup_->SetValueUnknown();
            else
                popup_->SetValue(double(IndexOf(current)));
        });
        popup_->NotifyWhenChanged([this, assemblage, cell](const UI_ControlChangedMessage&) {
            const int index = popup_->GetSelectedIndex();
            if (index >= 0 && std::size_t(index) < values_.size())
                assemblage->SetCell(cell, values_[std::size_t(index)]);
        });
        BindEnabled(token, cell, popup_.get());
    }

private:
    struct Action {
        name_t name;   // empty for an item to choose
        name_t target; // the cell it goes to; empty for none
    };

    void ReadLook(const dictionary_t& arguments) {
        qorui::OS_Menu::Style style;
        style.itemHeight = Size(arguments, "iconpopup_item_height"_name);
        style.checkColumnWidth = Size(arguments, "iconpopup_selection_column_width"_name);
        style.iconColumnWidth = Size(arguments, "iconpopup_icon_column_width"_name);
        style.iconSeparator =
            Boolean(arguments, "iconpopup_include_vertical_separator"_name, false);
        // Points of the script are the toolkit's logical pixels.
        style.fontSize = Size(arguments, "iconpopup_font_size"_name);
        popup_->SetMenuStyle(style);
        if (const float size = popup_->GetMenuStyle().fontSize; size > 0)
            popup_->SetFont(qorui::penrig::Font(size));
    }

    void ReadItems(const dictionary_t& arguments, const FactoryToken& token) {
        vorlen::array_t items;
        vorlen::get_value(arguments, "items"_name, items);
        const name_t output = OptionalCell(arguments, "bind_output"_name);
        std::vector<std::string> names;
        std::vector<IntrusivePtr<qorui::penrig::Image>> icons;
        for (const any_regular_t& item : items) {
            const auto& entry = item.cast<dictionary_t>();
            names.push_back(Text(entry, "name"_name));
            any_regular_t value;
            vorlen::get_value(entry, "value"_name, value);
            values_.push_back(value);
            const name_t action = NameOrText(entry, "action"_name);
            const name_t target = action ? OptionalCell(entry, "bind_output"_name) : name_t();
            actions_.push_back({action, target ? target : output});
            const name_t icon = NameOrText(entry, "icon"_name);
            icons.push_back(icon ? token.GetImage(icon.c_str()) : nullptr);
        }
        popup_->SetItems(names);
        for (std::size_t i = 0; i < names.size(); ++i) {
            popup_->SetItemIcon(i, icons[i]);
            popup_->SetItemCommand(i, bool(actions_[i].name));
            if (icons[i])
                tallestIcon_ = std::max(tallestIcon_, int(std::ceil(icons[i]->GetHeight())));
        }
    }

    void Measure(const dictionary_t& arguments) {
        const name_t strategy = NameOrText(arguments, "measureStrategy"_name);
        // Without a strategy the widest item, as every popup measured before there were any.
        const auto measure = !strategy || strategy == name_t("maxItem"_name)
                                 ? qorui::UI_Popup::Measure::kWidestItem
                                 : qorui::UI_Popup::Measure::kFirstItem;
        float maxText = qorui::UI_Popup::kNoLimit;
        if (const float chars = Size(arguments, "popup_maximum_width_chars"_name); chars > 0) {
            const float sample =
                qorui::control_drawing::MeasureText(kAverageCharSample, popup_->GetFont()).width;
            maxText = chars * sample / float(kAverageCharSample.size());
        }
        SetNaturalSize(int(popup_->GetBestWidth(measure, maxText)),
                       std::max(kControlHeight, tallestIcon_ + 4));
    }

    /// The first item to choose with that value; -1 for none.
    int IndexOf(const any_regular_t& value) const {
        for (std::size_t i = 0; i < values_.size(); ++i)
            if (!actions_[i].name && values_[i] == value)
                return int(i);
        return -1;
    }

    IntrusivePtr<qorui::UI_Popup> popup_;
    std::vector<any_regular_t> values_;
    std::vector<Action> actions_;
    int tallestIcon_ = 0;
};

/// A `[min, max]` pair or a dictionary with "min_value" and "max_value".
std::pair<double, double> ReadRange(const any_regular_t& range,
                                    std::pair<double, double> fallback) {
    if (range.is<vorlen::array_t>()) {
        const auto& pair = range.cast<vorlen::array_t>();
        if (pair.size() == 2)
            return {pair[0].cast<double>(), pair[1].cast<double>()};
        throw std::runtime_error("a range needs two numbers, [min, max]");
    }
    const auto& dictionary = range.cast<dictionary_t>();
    vorlen::get_value(dictionary, "min_value"_name, fallback.first);
    vorlen::get_value(dictionary, "max_value"_name, fallback.second);
    return fallback;
}

class KnobAdapter : public LeafAdapter {
public:
    KnobAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : LeafAdapter(parent, token) {
        auto knob = IntrusivePtr<qorui::UI_Knob>(new qorui::UI_Knob);
        SetNode(knob);
        SetNaturalSize(32, 32);
        any_regular_t range;
        if (vorlen::get_value(arguments, "value_range"_name, range)) {
            const auto [min, max] = ReadRange(range, {0.0, 1.0});
            knob->SetRange(min, max);
        }
        BindInteractiveNumber(*knob, Cell(arguments, "bind"_name), token);
    }
};

/// A slider over the range of `min_max_filter`; the cell holds the value in that range.
class SliderAdapter : public LeafAdapter {
public:
    SliderAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : LeafAdapter(parent, token) {
        const bool vertical = Cell(arguments, "orientation"_name) == name_t("vertical"_name);
        const name_t point = Cell(arguments, "slider_point"_name);
        qorui::SliderDirection direction = vertical ? qorui::kSliderDirectionVerticalPointingRight
                                                    : qorui::kSliderDirectionHorizontalPointingDown;
        if (point == name_t("none"_name))
            direction =
                vertical ? qorui::kSliderDirectionVertical : qorui::kSliderDirectionHorizontal;
        else if (point == name_t("up"_name))
            direction = qorui::kSliderDirectionHorizontalPointingUp;
        else if (point == name_t("left"_name))
            direction = qorui::kSliderDirectionVerticalPointingLeft;
        auto slider = IntrusivePtr<qorui::UI_Slider>(new qorui::UI_Slider(direction));
        SetNode(slider);
        const int thickness = int(std::ceil(qorui::UI_Slider::GetDefaultSize(direction)));
        SetNaturalSize(vertical ? thickness : 120, vertical ? 120 : thickness);
        WithDictionary(arguments, "min_max_filter"_name, token, [this](const dictionary_t& d) {
            *range_ = ReadRange(any_regular_t(d), *range_);
        });
        auto range = range_;
        BindInteractiveNumber(
            *slider, Cell(arguments, "bind"_name), token,
            [range](double normalised) {
                return range->first + normalised * (range->second - range->first);
            },
            [range](double value) {
                const double span = range->second - range->first;
                return span == 0.0 ? 0.0 : std::clamp((value - range->first) / span, 0.0, 1.0);
            });
    }

private:
    std::shared_ptr<std::pair<double, double>> range_ =
        std::make_shared<std::pair<double, double>>(0.0, 1.0);
};

/// A line across its row or column; it fills its axis unless the script aligns it otherwise.
class SeparatorAdapter : public LeafAdapter {
public:
    SeparatorAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : LeafAdapter(parent, token) {
        vertical_ = Cell(arguments, "orientation"_name) == name_t("vertical"_name);
        SetNode(IntrusivePtr<qorui::UI_Divider>(new qorui::UI_Divider));
        SetNaturalSize(vertical_ ? 1 : 8, vertical_ ? 8 : 1);
    }

    void AdjustAttributes(vorlen::layout_attributes_t& attributes) const override {
        auto& axis = attributes.axis[vertical_ ? 1 : 0];
        if (axis.alignment == vorlen::alignment_t::default_)
            axis.alignment = vorlen::alignment_t::forward_fill;
    }

private:
    bool vertical_ = false;
};

class ImageAdapter : public LeafAdapter {
public:
    ImageAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : LeafAdapter(parent, token) {
        auto image = token.GetImage(Text(arguments, "image"_name));
        if (image)
            SetNaturalSize(int(std::ceil(image->GetWidth())), int(std::ceil(image->GetHeight())));
        SetNode(IntrusivePtr<qorui::UI_ImageView>(new qorui::UI_ImageView(image)));
    }
};

/// A label and a hot text number in one row; the identifier names the number.
class InlineEditNumberAdapter : public LeafAdapter {
public:
    InlineEditNumberAdapter(const dictionary_t& arguments, UI_Node* parent,
                            const FactoryToken& token)
        : LeafAdapter(parent, token) {
        auto row = IntrusivePtr<qorui::UI_SubView>(new qorui::UI_SubView);
        SetNode(row);
        const std::string name = Text(arguments, "name"_name);
        number_ = IntrusivePtr<qorui::UI_HotTextNumber>(new qorui::UI_HotTextNumber);
        number_->SetTextLabel(Text(arguments, "label"_name));
        number_->SetDecimalPlaces(int(Number(arguments, "decimal_places"_name, 2)));
        number_->SetIncrement(Number(arguments, "increment"_name, 1));
        qorui::UI_HotTextNumber* raw = number_.get();
        WithDictionary(arguments, "min_max_filter"_name, token, [raw](const dictionary_t& d) {
            double min = raw->GetMinValue(), max = raw->GetMaxValue();
            vorlen::get_value(d, "min_value"_name, min);
            vorlen::get_value(d, "max_value"_name, max);
            raw->SetMinValue(min);
            raw->SetMaxValue(max);
        });
        any_regular_t value;
        name_t cell = Cell(arguments, "bind"_name);
        if (vorlen::get_value(arguments, "value"_name, value)) {
            if (value.is<name_t>())
                cell = value.cast<name_t>();
            else
                ShowNumber(*number_, value);
        }
        BindInteractiveNumber(*number_, cell, token);

        const auto font = qorui::control_drawing::GetControlFont();
        const auto [labelWidth, labelHeight] = TextSize(name, font);
        int x = 0;
        if (!name.empty()) {
            auto label = IntrusivePtr<qorui::UI_StaticText>(new qorui::UI_StaticText(name));
            label->SetFrame({0, 0, float(labelWidth + 1), float(kControlHeight)});
            row->ChildPushBack(label);
            x = labelWidth + 5;
        }
        const double widestValue =
            std::max(std::fabs(raw->GetMinValue()), std::fabs(raw->GetMaxValue()));
        const std::string sample =
            raw->FormatValue(std::isfinite(widestValue) && widestValue < 1e9 ? -widestValue
                                                                             : -99999.0) +
            raw->GetTextLabel() + " ";
        const int numberWidth = TextSize(sample, number_->GetFont()).first + 4;
        number_->SetFrame({float(x), 0, float(numberWidth), float(kControlHeight)});
        row->ChildPushBack(number_);
        SetNaturalSize(x + numberWidth, std::max(kControlHeight, labelHeight));
    }

    UI_Node* GetControlNode() const override { return number_.get(); }

private:
    IntrusivePtr<qorui::UI_HotTextNumber> number_;
};

} // namespace

std::shared_ptr<UI_TessNodeAdapterBase> MakeControlWidget(name_t widget,
                                                          const dictionary_t& arguments,
                                                          UI_Node* parent,
                                                          const FactoryToken& token) {
    if (widget == "radio_button"_name)
        return std::make_shared<RadioButtonAdapter>(arguments, parent, token);
    if (widget == "checkbox"_name)
        return std::make_shared<CheckboxAdapter>(arguments, parent, token);
    if (widget == "static_text"_name || widget == "display_text"_name)
        return std::make_shared<TextAdapter>(widget == "display_text"_name, arguments, parent,
                                             token);
    if (widget == "button"_name || widget == "toggle_button"_name)
        return std::make_shared<ButtonAdapter>(widget == "toggle_button"_name, arguments, parent,
                                               token);
    if (widget == "popup"_name)
        return std::make_shared<PopupAdapter>(arguments, parent, token);
    if (widget == "knob"_name)
        return std::make_shared<KnobAdapter>(arguments, parent, token);
    if (widget == "slider"_name)
        return std::make_shared<SliderAdapter>(arguments, parent, token);
    if (widget == "separator"_name)
        return std::make_shared<SeparatorAdapter>(arguments, parent, token);
    if (widget == "image"_name)
        return std::make_shared<ImageAdapter>(arguments, parent, token);
    if (widget == "inline_edit_number"_name)
        return std::make_shared<InlineEditNumberAdapter>(arguments, parent, token);
    return nullptr;
}

} // namespace qormarltess
