#include "graphs/curve_point_move_capture.hpp"

#include "platform/core/null_pointer_exception.hpp"
#include "platform/ui/ui_node_manager.hpp"

namespace qoraudiofiltersui {

using qorui::MouseEvent;
using qorui::PointerAction;

namespace {

CurveEditor* CheckEditor(CurveEditor* editor) {
    if (!editor)
        qorcore::config::DoThrowNullPtrException("CurveEditor");
    return editor;
}

} // namespace

CurvePointMoveCapture::CurvePointMoveCapture(CurveEditor* editor, const MouseEvent& start,
                                             int index, const CurveEditor::CurvePoint& point,
                                             bool show_tool_tip)
    : qorui::InputCapture(CheckEditor(editor), start), editor_(editor), index_(index),
      original_(point), showToolTip_(show_tool_tip) {}

bool CurvePointMoveCapture::Start() {
    editor_->BeginInteractiveChange();
    if (qorui::UI_NodeManager::Get().BeginInputCapture(qorcore::IntrusivePtr<InputCapture>(this)))
        return true;
    editor_->FinishInteractiveChange();
    return false;
}

bool CurvePointMoveCapture::UI_DoMouseEvent(const MouseEvent& event) {
    if (!event.IsAction(PointerAction::kMove) || index_ < 0)
        return false;
    index_ = editor_->MoveCurvePoint(index_, event.GetPosition(), event.GetModKey());
    UpdateToolTip(event.GetPosition());
    editor_->ContinueInteractiveChange(event.GetModKey());
    return false;
}

void CurvePointMoveCapture::UpdateToolTip(const qorcore::PointT<float>& position) {
    if (!showToolTip_ || index_ < 0)
        return;
    if (editor_->GetBounds().Contains(position))
        editor_->SetToolTip(editor_->GetCurvePoints()[index_].position);
    else
        editor_->CloseToolTip();
}

bool CurvePointMoveCapture::UI_DoCursor(const qorcore::PointT<float>&, qorui::ModifierFlags) {
    editor_->UI_SetCursor(CurveEditor::kCursorMovePoint);
    return true;
}

void CurvePointMoveCapture::UI_EndCapture(bool cancelled) {
    if (index_ >= 0 && cancelled) {
        editor_->RestorePoint(index_, original_);
        editor_->CancelInteractiveChange();
    } else {
        if (index_ >= 0) {
            // The release may come from elsewhere than the last move: the point follows it.
            const MouseEvent& last = qorui::UI_NodeManager::Get().GetPreviousMouseEvent();
            index_ = editor_->MoveCurvePoint(index_, editor_->UI_GlobalToLocalF(last.GetPosition()),
                                             last.GetModKey());
        }
        editor_->ContinueInteractiveChange();
        editor_->FinishInteractiveChange();
    }
    editor_->InvalidateContentRect();
}

} // namespace qoraudiofiltersui
