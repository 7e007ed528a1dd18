#pragma once

#include "platform/draw/penrig.hpp"
#include "platform/ui/ui_container.hpp"
#include "platform/ui/ui_node.hpp"

#include <functional>
#include <string>
#include <vector>

namespace qafui_testing {

/// A node that logs what happens to it and can be told to consume events.
class RecordingNode : public qorui::UI_Container {
public:
    explicit RecordingNode(std::string name = {}, std::vector<std::string>* log = nullptr)
        : name_(std::move(name)), log_(log) {}

    bool consumeMouse = false;
    bool consumeKeys = false;
    int cursor = -1; ///< set by UI_DoCursor when not -1
    std::function<bool(const qorui::PointT<float>&)> hitTest;
    std::function<void(int)> onTimer;
    std::function<void(const qorui::MouseEvent&)> onMouse;
    std::function<void(NodeChange)> onChange;

    std::vector<qorui::MouseEvent> mouseEvents;
    std::vector<qorui::KeyboardEvent> keyEvents;
    std::vector<int> changes;
    std::vector<int> timerTicks;
    std::vector<bool> focusChanges;
    int draws = 0;
    int sizeChanges = 0;

    bool UI_DoMouseEvent(const qorui::MouseEvent& e) override {
        mouseEvents.push_back(e);
        Log("mouse" + std::to_string(int(e.GetAction())));
        if (onMouse)
            onMouse(e);
        return consumeMouse;
    }
    bool UI_DoKeyboardEvent(const qorui::KeyboardEvent& e) override {
        keyEvents.push_back(e);
        Log("key" + std::to_string(int(e.GetCode())));
        return consumeKeys;
    }
    bool UI_DoTimerNotify(int id) override {
        timerTicks.push_back(id);
        if (onTimer)
            onTimer(id);
        return true;
    }
    bool UI_DoCursor(const qorui::PointT<float>&, qorui::ModifierFlags) override {
        if (cursor < 0)
            return false;
        UI_SetCursor(cursor);
        return true;
    }
    bool UI_HitTest(const qorui::PointT<float>& p) const override {
        return hitTest ? hitTest(p) : UI_Node::UI_HitTest(p);
    }
    void UI_NodeChanged(NodeChange change) override {
        changes.push_back(int(change));
        Log("change" + std::to_string(int(change)));
        if (onChange)
            onChange(change);
    }
    void UI_SizeChanged() override { ++sizeChanges; }
    void UI_FocusChanged(bool has) override { focusChanges.push_back(has); }
    void UI_Draw(qorui::Penrig* p) override {
        ++draws;
        UI_Container::UI_Draw(p);
    }

private:
    void Log(const std::string& what) {
        if (log_)
            log_->push_back(name_ + ":" + what);
    }

    std::string name_;
    std::vector<std::string>* log_;
};

inline qorcore::IntrusivePtr<RecordingNode> MakeNode(const std::string& name,
                                                     qorcore::RectT<float> frame,
                                                     std::vector<std::string>* log = nullptr) {
    qorcore::IntrusivePtr<RecordingNode> node(new RecordingNode(name, log));
    node->SetID(name);
    node->SetFrame(frame);
    return node;
}

} // namespace qafui_testing
