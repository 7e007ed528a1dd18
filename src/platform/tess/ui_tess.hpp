#pragma once

#include "core/any_regular.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/tess/factory_token.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"
#include "platform/tess/ui_tess_node_adapter_base.hpp"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qorui::penrig {
class SupplierInterface;
}

namespace vorlen {
class sheet_t;
struct widget_description_t;
} // namespace vorlen

namespace qormarltess {

/// Builds views from the two script languages: a sheet script fills a `sheet_t`; a layout
/// script becomes a tree of nodes, placed by the layout solver and bound to the cells of the
/// view's sheet and the layout's own sheet.
///
/// The engine makes the built-in widgets of the layout vocabulary itself (`row`, `column`,
/// `group`, `subview`, `optional`, `tab_group`, `radiogroup`, `radio_button`, `checkbox`,
/// `static_text`, `display_text`, `button`, `toggle_button`, `popup`, `knob`, `slider`,
/// `separator`, `image`, `inline_edit_number`, `layout_script`) and asks the client widget
/// adapter factory for every other name. A name nobody knows is left out, with its children,
/// and traced under "UI_Tess::ParseTessScript".
///
/// An engine is needed only while it parses: what a script made belongs to the sheet and the
/// root afterwards.
class UI_Tess {
public:
    /// Whether the engine builds for a window; a sheet alone needs none.
    enum class WindowVariant { kNone, kDefault };

    explicit UI_Tess(const qorui::penrig::SupplierInterface* supplier,
                     WindowVariant variant = WindowVariant::kDefault);
    virtual ~UI_Tess();
    UI_Tess(const UI_Tess&) = delete;
    UI_Tess& operator=(const UI_Tess&) = delete;

    /// Reads a sheet script into `sheet` and returns it. Failures raise `stream_error_t` at
    /// "file:line:column", `fileName` naming the source; `description` names the kind of text
    /// in messages that have no place.
    std::shared_ptr<vorlen::sheet_t> ParseMarlScript(std::istream& stream,
                                                     std::shared_ptr<vorlen::sheet_t> sheet,
                                                     const std::string& description,
                                                     std::string_view fileName = {});
    /// Reads a layout script and builds its view, bound to `sheet` (which may be empty of cells)
    /// and to the layout's own sheet. The root comes back laid out at its natural size, with
    /// pending visibility changes applied. Failures raise `stream_error_t` at the place of the
    /// script, and nothing of the view remains.
    IntrusivePtr<UI_QORTessRoot> ParseTessScript(std::istream& stream,
                                                 std::shared_ptr<vorlen::sheet_t> sheet,
                                                 std::string_view fileName = {});

    void SetUseSpectrumPolicy(bool use) { useSpectrumPolicy_ = use; }
    bool GetUseSpectrumPolicy() const { return useSpectrumPolicy_; }
    /// Reads resources that scripts name (images, data) by "base.extension".
    void SetResourceProvider(ResourceProvider provider) { resources_ = std::move(provider); }
    /// Makes images by the names layouts give them ("Add_Sm").
    void SetImageSupplyFunction(ImageSupplyFunction images) { images_ = std::move(images); }
    void SetClientWidgetAdapterFactory(ClientWidgetAdapterFactory factory) {
        clientFactory_ = std::move(factory);
    }
    /// Runs on every sheet that a layout script makes for itself (the main layout's and each
    /// inserted one's), before its cells are read: the place to give its machine functions.
    void SetLayoutSheetSetup(std::function<void(vorlen::sheet_t&)> setup) {
        layoutSheetSetup_ = std::move(setup);
    }

    /// Ends the bindings of a view and lets go of what its script made; the root's nodes stay
    /// where they hang. Null is allowed.
    static void Release(const IntrusivePtr<UI_QORTessRoot>& root);

protected:
    /// The text of the layout that `layout_script(identifier: name)` inserts; empty when there
    /// is none. Nothing by default.
    virtual std::vector<std::uint8_t> GetLayoutScript(vorlen::name_t name);

private:
    void Build(const vorlen::widget_description_t& widget, UI_TessViewHolder& holder,
               const FactoryToken& token, vorlen::tess_t::iterator parentIterator,
               UI_Node* parentNode);
    std::shared_ptr<UI_TessNodeAdapterBase> MakeAdapter(const vorlen::widget_description_t& widget,
                                                        UI_Node* parentNode,
                                                        const FactoryToken& token);

    const qorui::penrig::SupplierInterface* supplier_;
    WindowVariant variant_;
    bool useSpectrumPolicy_ = false;
    ResourceProvider resources_;
    ImageSupplyFunction images_;
    ClientWidgetAdapterFactory clientFactory_;
    std::function<void(vorlen::sheet_t&)> layoutSheetSetup_;
};

} // namespace qormarltess
