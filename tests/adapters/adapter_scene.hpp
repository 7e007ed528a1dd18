#pragma once

// A view built from a sheet script and a layout script by an engine that asks the library's
// adapter factory for the widgets it does not know, hung in a headless window; and the round
// trip of a widget's arguments through the control it makes.

#include "core/expression/parser.hpp"
#include "core/expression/virtual_machine.hpp"
#include "core/stream_error.hpp"
#include "framework/adapter_factory.hpp"
#include "platform/tess/tess_scene.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace adapter_testing {

using vorlen::any_regular_t;

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
    /// A token for building adapters by hand under the root.
    qormarltess::FactoryToken Token() { return {Holder(), nullptr, nullptr, nullptr, false}; }

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

/// The value of an expression of the scripts, such as "{ r: 1, g: 0.5, b: 0 }".
inline any_regular_t Value(const std::string& expression) {
    vorlen::virtual_machine_t machine;
    machine.evaluate(vorlen::parse_expression(expression));
    return machine.back();
}

/// One argument of a widget, and how to write what the control made of it back in the
/// argument's form.
template <typename Control>
struct Argument {
    std::string name;
    any_regular_t given;
    std::function<any_regular_t(const Control&)> written_back;
};

template <typename Control, typename Value, typename Getter>
Argument<Control> Arg(const char* name, Value value, Getter getter) {
    return {name, any_regular_t(value), [getter](const Control& c) {
                return any_regular_t(std::invoke(getter, c));
            }};
}

/// Builds `widget` in a layout over `sheet` from the arguments and the script text `more`,
/// checks the arguments' round trip (what the control shows of each, written back, compares
/// equal to it), then hands the scene and the control to `then` for what has no round trip.
template <typename Control>
void ExpectRoundTrip(const std::string& sheet, const std::string& widget,
                     const std::vector<Argument<Control>>& arguments, const std::string& more = "",
                     const std::function<void(AdapterScene&, Control&)>& then = nullptr) {
    std::ostringstream call;
    call.precision(17);
    call << "layout T { view column() { " << widget << "(identifier: 'W'" << more;
    for (const Argument<Control>& a : arguments) {
        call << ", " << a.name << ": ";
        if (a.given.template is<std::string>())
            call << "'" << a.given.template cast<std::string>() << "'";
        else if (a.given.template is<bool>())
            call << (a.given.template cast<bool>() ? "true" : "false");
        else
            call << a.given.template cast<double>();
    }
    call << "); } }";
    AdapterScene scene(sheet, call.str());
    Control& control = scene.As<Control>("W");
    for (const Argument<Control>& a : arguments)
        EXPECT_EQ(a.written_back(control), a.given) << a.name;
    if (then)
        then(scene, control);
}

} // namespace adapter_testing
