#pragma once

// A view built from a sheet script and a layout script by an engine that asks the library's
// adapter factory for the widgets it does not know, hung in a headless window.

#include "core/stream_error.hpp"
#include "framework/adapter_factory.hpp"
#include "platform/tess/tess_scene.hpp"

#include <functional>
#include <stdexcept>
#include <string>

namespace adapter_testing {

/// The engine an editor view uses, without the view: the library's factory for client widgets.
struct LibraryEngine {
    explicit LibraryEngine(const std::function<void(qormarltess::UI_Tess&)>& setup) {
        engine.SetClientWidgetAdapterFactory(*qoraudiofiltersui::GetLibraryAdapterFactory());
        if (setup)
            setup(engine);
    }
    qormarltess::UI_Tess engine{nullptr};
};

struct AdapterScene : LibraryEngine, qafui_testing::TessScene {
    /// `setup` prepares the engine before the layout is read (images, resources).
    AdapterScene(const std::string& sheetText, const std::string& layoutText,
                 const std::function<void(qormarltess::UI_Tess&)>& setup = nullptr)
        : LibraryEngine(setup), TessScene(sheetText, layoutText, 1.0f, &engine) {}

    /// The control of an identifier as its class; another class fails the test's expectation.
    template <typename Control>
    Control& As(const char* identifier) {
        auto* control = dynamic_cast<Control*>(&Control_(identifier));
        if (!control)
            throw std::runtime_error(std::string("control '") + identifier + "' of another class");
        return *control;
    }

private:
    qorui::UI_Node& Control_(const char* identifier) { return TessScene::Control(identifier); }
};

/// The message a layout fails with, place first; "no failure" when it builds.
inline std::string FailureOf(const std::string& sheetText, const std::string& layoutText) {
    try {
        AdapterScene scene(sheetText, layoutText);
    } catch (const std::exception& error) {
        return vorlen::format_stream_error(error);
    }
    return "no failure";
}

} // namespace adapter_testing
