#include "platform/ui/input_capture.hpp"

#include "platform/core/null_pointer_exception.hpp"
#include "platform/ui/ui_node.hpp"

namespace qorui {

InputCapture::InputCapture(UI_Node* node, const MouseEvent& startEvent)
    : node_(node), startEvent_(startEvent) {
    if (!node)
        qorcore::config::DoThrowNullPtrException("InputCapture");
}

InputCapture::~InputCapture() = default;

bool InputCapture::UI_DoMouseEvent(const MouseEvent&) {
    return true;
}
bool InputCapture::UI_DoKeyboardEvent(const KeyboardEvent&) {
    return false;
}
bool InputCapture::UI_DoCursor(const PointT<float>&, ModifierFlags) {
    return false;
}
void InputCapture::UI_EndCapture(bool) {}

} // namespace qorui
