#pragma once

#include "platform/dialogs/ui_dialog_hot_text_number.hpp"
#include "platform/dialogs/ui_modal_dialog.hpp"

#include <string>

namespace qormediaui {

/// The dialog that edits one point of a curve: two labelled numbers, OK and Cancel. The first
/// enabled number is open for typing when the dialog appears. In a number being typed, Return
/// takes the text (a malformed one keeps the field open and marked), Escape drops it; with no
/// typing open, Return accepts the dialog (response 1) and Escape cancels it (response 0). The
/// Cancel button gives response 2.
class CurvePointEditDialog : public qorui::UI_ModalDialog {
public:
    enum Response { kResponseCancelled = 0, kResponseAccept = 1, kResponseCancelButton = 2 };

    /// `parent` gives the window `RunModal()` runs in; it may be null when the dialog is run
    /// with an explicit window.
    CurvePointEditDialog(std::string title, std::string label1, std::string label2,
                         qorui::UI_Node* parent);

    std::string_view GetModalKind() const override { return "curve point edit"; }

    qorui::UI_HotTextNumber* GetHotTextNumber1() const { return number1_.get(); }
    qorui::UI_HotTextNumber* GetHotTextNumber2() const { return number2_.get(); }
    const std::string& GetLabel1() const { return label1_; }
    const std::string& GetLabel2() const { return label2_; }

    using UI_ModalDialog::RunModal;
    /// Runs in the parent's window and returns the response. Without a parent in a window it
    /// throws std::invalid_argument.
    int RunModal();
    bool IsAccepted() const { return GetResponse() == kResponseAccept; }

    /// Where a number's field is drawn, in the dialog's coordinates (1 or 2; others empty).
    qorui::RectT<float> GetFieldRect(int which) const;

protected:
    void UI_ModalStarted() override;
    void DrawContent(qorui::Penrig* penrig, const qorui::RectT<float>& area) const override;

private:
    std::string label1_;
    std::string label2_;
    qorui::UI_Node* parent_;
    qorui::IntrusivePtr<qorui::UI_DialogHotTextNumber> number1_;
    qorui::IntrusivePtr<qorui::UI_DialogHotTextNumber> number2_;
};

} // namespace qormediaui
