#pragma once

#include "graphs/curve_editor.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/ui/input_capture.hpp"

namespace qoraudiofiltersui {

/// The drag of one point of a `CurveEditor`, from the press to the release: each move goes
/// through the editor's rules of moving, and the whole drag is one interactive change of the
/// editor. Escape or a lost capture puts the point back as it was. The index follows the point
/// as it passes neighbours, and becomes -1 once the point has been pulled off and deleted; the
/// gesture then lives on without a point.
class CurvePointMoveCapture : public qorui::InputCapture {
public:
    /// A null editor throws the null-pointer exception.
    CurvePointMoveCapture(CurveEditor* editor, const qorui::MouseEvent& start, int index,
                          const CurveEditor::CurvePoint& point, bool show_tool_tip);

    /// Begins the editor's interactive change and the capture; false (with the change closed
    /// again) when the editor is in no window.
    bool Start();

    /// The index of the dragged point now, or -1 once it is deleted.
    int GetIndex() const { return index_; }
    const CurveEditor::CurvePoint& GetOriginalPoint() const { return original_; }

    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override;
    bool UI_DoCursor(const qorcore::PointT<float>& local, qorui::ModifierFlags modifiers) override;
    void UI_EndCapture(bool cancelled) override;

private:
    void UpdateToolTip(const qorcore::PointT<float>& position);

    // Counted, so that an editor its owner lets go of during a drag outlives the drag.
    qorcore::IntrusivePtr<CurveEditor> editor_;
    int index_;
    CurveEditor::CurvePoint original_;
    bool showToolTip_;
};

} // namespace qoraudiofiltersui
