#pragma once

#include "platform/tess/ui_tess.hpp"
#include "platform/ui/headless_window.hpp"
#include "sheet/sheet.hpp"
#include "sheet/sheet_reader.hpp"

#include <memory>
#include <sstream>
#include <string>

namespace qafui_testing {

/// A view built from a sheet script and a layout script, hung in a headless window.
struct TessScene {
    TessScene(const std::string& sheetText, const std::string& layoutText, float scale = 1.0f,
              qormarltess::UI_Tess* engine = nullptr)
        : sheet(std::make_shared<vorlen::sheet_t>()) {
        if (!sheetText.empty())
            vorlen::parse_sheet_script(sheetText, vorlen::name_t("test.mrl"), *sheet);
        sheet->update();
        qormarltess::UI_Tess own(nullptr);
        std::istringstream stream(layoutText);
        root = (engine ? *engine : own).ParseTessScript(stream, sheet, "test.tss");
        auto& queue = root->GetTessViewHolder().GetVisibleChangeQueue();
        queue.ConnectAfterBatch([this] { root->RecalcLayout(); });
        window = std::make_unique<qorui::HeadlessWindow>(
            std::max(1.0f, root->GetFrame().width), std::max(1.0f, root->GetFrame().height), scale);
        window->AddNode(root);
    }
    ~TessScene() {
        qormarltess::UI_Tess::Release(root);
        window->GetRoot()->RemoveAllChildren();
    }

    qormarltess::UI_TessViewHolder& Holder() { return root->GetTessViewHolder(); }
    qorui::UI_Node& Control(const char* identifier) {
        auto node = Holder().GetControl(identifier);
        if (!node)
            throw std::runtime_error(std::string("no control ") + identifier);
        return *node;
    }
    /// The centre of a control in window coordinates.
    qorcore::PointT<float> Centre(const char* identifier) {
        qorui::UI_Node& node = Control(identifier);
        return node.UI_LocalToGlobalF(
            qorcore::PointT<float>{node.GetFrame().width / 2, node.GetFrame().height / 2});
    }
    void Click(const char* identifier) {
        const auto at = Centre(identifier);
        window->Click(at.x, at.y);
    }
    /// Sets a cell from outside, as the editor's refresh does, and runs what follows.
    void Set(const char* cell, const vorlen::any_regular_t& value) {
        sheet->set(vorlen::name_t(cell), value);
        sheet->update();
        Holder().GetRootBehavior()();
    }
    vorlen::any_regular_t Get(const char* cell) { return sheet->get(vorlen::name_t(cell)); }

    std::shared_ptr<vorlen::sheet_t> sheet;
    qorcore::IntrusivePtr<qormarltess::UI_QORTessRoot> root;
    std::unique_ptr<qorui::HeadlessWindow> window;
};

} // namespace qafui_testing
