#include "core/number_text.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/tess/assemblage.hpp"
#include "platform/tess/tess_widgets.hpp"

#include <cmath>
#include <utility>

namespace qormarltess::widget_support {

using vorlen::any_regular_t;
using vorlen::dictionary_t;
using vorlen::name_t;

bool Read(const dictionary_t& arguments, name_t key, double& variable) {
    return vorlen::get_value(arguments, key, variable);
}

bool Read(const dictionary_t& arguments, name_t key, float& variable) {
    double number = variable;
    if (!Read(arguments, key, number))
        return false;
    variable = float(number);
    return true;
}

bool Read(const dictionary_t& arguments, name_t key, int& variable) {
    double number = variable;
    if (!Read(arguments, key, number))
        return false;
    variable = int(number);
    return true;
}

bool Read(const dictionary_t& arguments, name_t key, bool& variable) {
    return vorlen::get_value(arguments, key, variable);
}

bool Read(const dictionary_t& arguments, name_t key, name_t& variable) {
    return vorlen::get_value(arguments, key, variable);
}

bool Read(const dictionary_t& arguments, name_t key, vorlen::array_t& variable) {
    return vorlen::get_value(arguments, key, variable);
}

bool Read(const dictionary_t& arguments, name_t key, dictionary_t& variable) {
    return vorlen::get_value(arguments, key, variable);
}

bool ReadText(const dictionary_t& arguments, name_t key, std::string& variable) {
    std::string text;
    if (!vorlen::get_value(arguments, key, text))
        return false;
    variable = LocalizeString(text);
    return true;
}

std::string Text(const dictionary_t& arguments, name_t key) {
    std::string text;
    ReadText(arguments, key, text);
    return text;
}

name_t Cell(const dictionary_t& arguments, name_t key) {
    name_t cell;
    Read(arguments, key, cell);
    return cell;
}

double Number(const dictionary_t& arguments, name_t key, double fallback) {
    Read(arguments, key, fallback);
    return fallback;
}

bool Boolean(const dictionary_t& arguments, name_t key, bool fallback) {
    Read(arguments, key, fallback);
    return fallback;
}

bool IsOn(const any_regular_t& value) {
    if (value.is<bool>())
        return value.cast<bool>();
    if (value.is<double>())
        return value.cast<double>() != 0.0;
    return false;
}

std::string DisplayText(const any_regular_t& value) {
    if (value.is<double>())
        return vorlen::number_text(value.cast<double>());
    if (value.is<std::string>())
        return value.cast<std::string>();
    if (value.is<name_t>())
        return value.cast<name_t>().c_str();
    if (value.is<bool>())
        return value.cast<bool>() ? "true" : "false";
    return {};
}

std::pair<int, int> TextSize(std::string_view text, const qorui::penrig::Font& font) {
    const auto metrics = qorui::control_drawing::MeasureText(text, font);
    return {int(std::ceil(metrics.width)), int(std::ceil(metrics.height))};
}

void WithDictionary(const dictionary_t& arguments, name_t key, const FactoryToken& token,
                    std::function<void(const dictionary_t&)> apply) {
    const auto found = arguments.find(key);
    if (found == arguments.end())
        return;
    if (found->second.is<name_t>()) {
        token.GetAssemblage().BindView(found->second.cast<name_t>(),
                                       [apply = std::move(apply)](const any_regular_t& value) {
                                           apply(value.cast<dictionary_t>());
                                       });
        return;
    }
    apply(found->second.cast<dictionary_t>());
}

void BindEnabled(const FactoryToken& token, name_t cell, std::function<void(bool)> view) {
    if (cell)
        token.GetAssemblage().BindEnabled(cell, std::move(view));
}

void BindEnabled(const FactoryToken& token, name_t cell, UI_Node* node) {
    if (!node)
        return;
    qorcore::IntrusivePtr<UI_Node> kept(node);
    BindEnabled(token, cell, [kept](bool enabled) { kept->UI_SetEnabled(enabled); });
}

} // namespace qormarltess::widget_support
