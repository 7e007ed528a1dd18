#include "platform/dialogs/curve_point_edit_dialog.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_window.hpp"

#include <cmath>
#include <stdexcept>

namespace qormediaui {

using qorui::RectT;

namespace {
constexpr float kContentWidth = 264.0f;
constexpr float kFieldHeight = 24.0f;
constexpr float kRowGap = 10.0f;
constexpr float kLabelWidth = 104.0f;
constexpr float kLabelGap = 8.0f;
} // namespace

CurvePointEditDialog::CurvePointEditDialog(std::string title, std::string label1,
                                           std::string label2, qorui::UI_Node* parent)
    : UI_ModalDialog(std::move(title), kContentWidth, 2 * kFieldHeight + kRowGap),
      label1_(std::move(label1)), label2_(std::move(label2)), parent_(parent),
      number1_(qorcore::MakeIntrusive<qorui::UI_DialogHotTextNumber>(this)),
      number2_(qorcore::MakeIntrusive<qorui::UI_DialogHotTextNumber>(this)) {
    AddButton(kResponseAccept, "OK");
    AddButton(kResponseCancelButton, "Cancel");
    for (qorui::UI_HotTextNumber* number : {number1_.get(), number2_.get()}) {
        number->SetDecimalPlaces(1);
        number->SetAlignment(qorui::penrig::HorizontalAlignment::kCenter);
        ChildPushBack(qorui::IntrusivePtr<qorui::UI_Node>(number));
    }
}

int CurvePointEditDialog::RunModal() {
    qorui::UI_Window* window = parent_ ? parent_->GetWindow() : nullptr;
    if (!window)
        throw std::invalid_argument("CurvePointEditDialog::RunModal: the parent is in no window");
    return RunModal(*window);
}

RectT<float> CurvePointEditDialog::GetFieldRect(int which) const {
    if (which != 1 && which != 2)
        return {};
    const RectT<float> area = GetContentArea();
    const float x = area.x + kLabelWidth + kLabelGap;
    return {x, area.y + float(which - 1) * (kFieldHeight + kRowGap), area.Right() - x,
            kFieldHeight};
}

void CurvePointEditDialog::UI_ModalStarted() {
    UI_ModalDialog::UI_ModalStarted();
    // The numbers fill their boxes, so the text field typing opens covers the box exactly.
    number1_->SetFrame(GetFieldRect(1));
    number2_->SetFrame(GetFieldRect(2));
    // Ready for typing at once, as an edit dialog should be.
    for (qorui::UI_DialogHotTextNumber* number : {number1_.get(), number2_.get()})
        if (number->IsEnabledInTree() && number->BeginDialogTyping())
            break;
}

void CurvePointEditDialog::DrawContent(qorui::Penrig* p, const RectT<float>& area) const {
    const qorui::skins::Palette& pal = qorui::skins::GetPalette();
    p->SetFont(qorui::penrig::Font(pal.fontSize));
    const std::string* labels[] = {&label1_, &label2_};
    const qorui::UI_HotTextNumber* numbers[] = {number1_.get(), number2_.get()};
    for (int i = 0; i < 2; ++i) {
        const RectT<float> field = GetFieldRect(i + 1);
        const bool enabled = numbers[i]->IsEnabledInTree();
        p->SetColor(enabled ? pal.defaultText : pal.disabledText);
        p->DrawText(*labels[i], {area.x, field.y, kLabelWidth, field.height},
                    qorui::penrig::HorizontalAlignment::kRight);
        p->FillRect(field, enabled ? pal.textFieldBackground : pal.panelBackground);
        p->FrameRect(field, pal.textFieldBorder);
    }
}

} // namespace qormediaui
