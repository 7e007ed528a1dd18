#include "platform/tess/ui_tess.hpp"

#include "core/expression/virtual_machine.hpp"
#include "core/stream_error.hpp"
#include "layout/layout_attributes_reader.hpp"
#include "layout/layout_reader.hpp"
#include "platform/core/localizer.hpp"
#include "platform/core/trace.hpp"
#include "platform/tess/tess_widgets.hpp"
#include "sheet/sheet.hpp"
#include "sheet/sheet_reader.hpp"

#include <iterator>
#include <sstream>

namespace qormarltess {

namespace {

using vorlen::name_t;
using vorlen::operator""_name;

std::string ReadAll(std::istream& stream) {
    return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

// `localize` in scripts resolves through the toolkit's localiser unless a host set its own.
void EnsureLocalization() {
    if (!vorlen::localization_ready())
        vorlen::set_localization_proc(
            [](const std::string& text) { return qorcore::Localize(text); });
}

} // namespace

UI_Tess::UI_Tess(const qorui::penrig::SupplierInterface* supplier, WindowVariant variant)
    : supplier_(supplier), variant_(variant) {
    EnsureLocalization();
}

UI_Tess::~UI_Tess() = default;

std::vector<std::uint8_t> UI_Tess::GetLayoutScript(name_t) {
    return {};
}

std::shared_ptr<vorlen::sheet_t> UI_Tess::ParseMarlScript(std::istream& stream,
                                                          std::shared_ptr<vorlen::sheet_t> sheet,
                                                          const std::string& description,
                                                          std::string_view fileName) {
    if (!sheet)
        sheet = std::make_shared<vorlen::sheet_t>();
    const std::string source = fileName.empty() ? description : std::string(fileName);
    vorlen::parse_sheet_script(ReadAll(stream), name_t(source.c_str()), *sheet);
    return sheet;
}

IntrusivePtr<UI_QORTessRoot> UI_Tess::ParseTessScript(std::istream& stream,
                                                      std::shared_ptr<vorlen::sheet_t> sheet,
                                                      std::string_view fileName) {
    vorlen::layout_reader_options_t options;
    options.provider =
        [this](const std::string& identifier) -> std::optional<vorlen::layout_source_t> {
        const std::vector<std::uint8_t> bytes = GetLayoutScript(name_t(identifier.c_str()));
        if (bytes.empty())
            return std::nullopt;
        return vorlen::layout_source_t{std::string(bytes.begin(), bytes.end()),
                                       name_t((identifier + ".tss").c_str())};
    };
    options.prepare_sheet = [this](vorlen::sheet_t& layoutSheet) {
        if (layoutSheetSetup_)
            layoutSheetSetup_(layoutSheet);
    };
    const std::string source = fileName.empty() ? "layout description" : std::string(fileName);
    const vorlen::layout_description_t description =
        vorlen::parse_layout_script(ReadAll(stream), name_t(source.c_str()), options);

    IntrusivePtr<UI_QORTessRoot> root(new UI_QORTessRoot);
    UI_TessViewHolder& holder = root->GetTessViewHolder();
    holder.layoutSheet = description.view.sheet;
    holder.GetAssemblage().AddSheet(sheet);
    holder.GetAssemblage().AddSheet(description.view.sheet);
    // The layout's own cells publish their values only once solved; widgets bound to them
    // (a tab group and its panels) read them as they connect.
    if (description.view.sheet)
        description.view.sheet->update();
    // A user's change of a cell may show or hide panels: they follow once the sheet is done.
    holder.GetAssemblage().SetAfterWrite([&holder] { holder.GetRootBehavior()(); });
    const FactoryToken token(holder, supplier_, &resources_, &images_, useSpectrumPolicy_);
    try {
        Build(description.view, holder, token, vorlen::tess_t::iterator(), root.get());
        holder.GetVisibleChangeQueue().Process();
        root->RecalcLayout();
    } catch (...) {
        Release(root);
        root->RemoveAllChildren();
        throw;
    }
    return root;
}

std::shared_ptr<UI_TessNodeAdapterBase>
UI_Tess::MakeAdapter(const vorlen::widget_description_t& widget, UI_Node* parentNode,
                     const FactoryToken& token) {
    if (auto adapter = MakeContainerWidget(widget.name, widget.arguments, parentNode, token))
        return adapter;
    if (auto adapter = MakeControlWidget(widget.name, widget.arguments, parentNode, token))
        return adapter;
    if (clientFactory_)
        if (UI_QORClientWidgetTessAdapter* adapter =
                clientFactory_(widget.name, widget.arguments, parentNode, token))
            return std::shared_ptr<UI_TessNodeAdapterBase>(adapter);
    return nullptr;
}

// The reader bounds how deeply descriptions nest, and so this recursion.
void UI_Tess::Build(const vorlen::widget_description_t& widget, UI_TessViewHolder& holder,
                    const FactoryToken& token, vorlen::tess_t::iterator parentIterator,
                    UI_Node* parentNode) {
    // An inserted layout brings its own sheet; its cells resolve after those met before.
    if (widget.sheet && widget.sheet != holder.layoutSheet)
        holder.GetAssemblage().AddSheet(widget.sheet);

    std::shared_ptr<UI_TessNodeAdapterBase> adapter;
    vorlen::layout_attributes_t attributes = vorlen::layout_attributes_of(widget);
    try {
        adapter = MakeAdapter(widget, parentNode, token);
        if (!adapter) {
            static qorcore::debug::TraceSite site;
            constexpr const char* category = "UI_Tess::ParseTessScript";
            if (site.IsEnabled(category, 5))
                qorcore::debug::Trace(5, category,
                                      vorlen::format_position(widget.position) + ": widget '" +
                                          widget.name.c_str() +
                                          "' is unknown and left out, with its children\n");
            return;
        }
        adapter->SetTypeName(widget.name.c_str());
        adapter->AdjustAttributes(attributes);
        adapter->SetRequestedSize(attributes.width(), attributes.height());
        std::string identifier;
        if (widget.name != name_t("layout_script"_name) &&
            vorlen::get_value(widget.arguments, "identifier"_name, identifier))
            adapter->UI_SetNodeID(identifier);
        // `alt` is a built-in widget's tool tip, localised like its `name`; client adapters
        // read it themselves (an edit number keeps a tip for its disabled state too).
        std::string alt;
        if (!dynamic_cast<UI_QORClientWidgetTessAdapter*>(adapter.get()) &&
            vorlen::get_value(widget.arguments, "alt"_name, alt) && adapter->GetControlNode())
            adapter->GetControlNode()->UI_SetToolTip(LocalizeString(alt));
        adapter->AddToParent();
    } catch (const vorlen::stream_error_t&) {
        throw;
    } catch (const std::exception& error) {
        throw vorlen::stream_error_t(error, widget.position);
    }

    const bool container = vorlen::is_layout_container(widget);
    const vorlen::tess_t::iterator node =
        holder.GetTessEngine().add_placeable(parentIterator, attributes, container, adapter);
    adapter->SetTessIterator(node);
    if (!container)
        return;
    UI_Node* childParent = adapter->GetChildParent() ? adapter->GetChildParent() : parentNode;
    for (const vorlen::widget_description_t& child : widget.children)
        Build(child, holder, token, node, childParent);
}

void UI_Tess::Release(const IntrusivePtr<UI_QORTessRoot>& root) {
    if (root)
        root->GetTessViewHolder().Release();
}

} // namespace qormarltess
