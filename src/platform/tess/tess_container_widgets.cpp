// The widgets of a layout that hold others: the arrangers (`row`, `column`, `overlay`,
// `layout_script`), `subview`, `group`, `optional`, `tab_group` and `radiogroup`.

#include "platform/panels/ui_outline_box_with_label.hpp"
#include "platform/panels/ui_tab_group.hpp"
#include "platform/skins/control_drawing.hpp"
#include "platform/tess/assemblage.hpp"
#include "platform/tess/tess_widgets.hpp"
#include "platform/tess/ui_tess_sub_view.hpp"
#include "platform/tess/ui_tess_view_holder.hpp"
#include "platform/widgets/ui_radio_group.hpp"

#include <algorithm>
#include <cmath>

namespace qormarltess {

namespace {

using namespace widget_support;
using vorlen::any_regular_t;
using vorlen::dictionary_t;
using vorlen::name_t;
using vorlen::operator""_name;

/// `row`, `column`, `overlay`, `layout_script`: they only arrange, so their children hang in
/// the nearest ancestor that has a node.
class ArrangerAdapter : public UI_TessNodeAdapterBase {
public:
    using UI_TessNodeAdapterBase::UI_TessNodeAdapterBase;
    UI_Node* GetChildParent() const override { return GetParentNode(); }
};

class SubviewAdapter : public UI_TessNodeAdapterBase {
public:
    SubviewAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : UI_TessNodeAdapterBase(parent, token) {
        auto view = IntrusivePtr<UI_TessSubView>(new UI_TessSubView);
        border_ = Boolean(arguments, "show_border"_name, false);
        view->SetDrawOutline(border_);
        SetNode(view);
    }

    void measure(vorlen::extents_t& result) override {
        if (!border_)
            return;
        result.horizontal().frame = {1, 1};
        result.vertical().frame = {1, 1};
    }

private:
    bool border_ = false;
};

class GroupAdapter : public UI_TessNodeAdapterBase {
public:
    GroupAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : UI_TessNodeAdapterBase(parent, token) {
        box_ = IntrusivePtr<qorui::UI_OutlineBoxWithLabel>(
            new qorui::UI_OutlineBoxWithLabel(Text(arguments, "name"_name)));
        SetNode(box_);
    }

    void measure(vorlen::extents_t& result) override {
        constexpr int side = 8;
        const int top = int(std::ceil(box_->GetContentTop())) + 4;
        result.horizontal().frame = {side, side};
        result.vertical().frame = {top, side};
        const int label =
            TextSize(box_->GetLabel(), qorui::control_drawing::GetControlFont()).first;
        result.width() = label + 4 * side;
    }

private:
    IntrusivePtr<qorui::UI_OutlineBoxWithLabel> box_;
};

/// Shows its children while its cell equals `value`, or while the cell is on when there is no
/// `value`. Changes wait in the view's queue until the sheet's round is over.
class OptionalAdapter : public UI_TessNodeAdapterBase {
public:
    OptionalAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : UI_TessNodeAdapterBase(parent, token) {
        SetNode(IntrusivePtr<UI_TessSubView>(new UI_TessSubView));
        const name_t cell = Cell(arguments, "bind"_name);
        if (!cell)
            return;
        any_regular_t value;
        const bool hasValue = vorlen::get_value(arguments, "value"_name, value);
        UI_TessViewHolder* holder = &token.GetViewHolder();
        // The assemblage ends this connection before the holder lets go of the adapter.
        token.GetAssemblage().BindView(
            cell, [this, holder, hasValue, value](const any_regular_t& current) {
                const bool show = hasValue ? current == value : IsOn(current);
                holder->GetVisibleChangeQueue().Push([this, holder, show] { Show(*holder, show); });
            });
    }

private:
    void Show(UI_TessViewHolder& holder, bool show) {
        if (GetTessIterator())
            holder.GetTessEngine().set_visible(GetTessIterator(), show);
        GetNode()->UI_SetVisible(show);
    }
};

/// Tabs over a set of `optional` panels: choosing a tab writes its item's value to the cell,
/// and the panels bound to that cell follow. The tab group's own panels stay empty; the
/// script's panels are its children, placed by the layout.
class TabGroupAdapter : public UI_TessNodeAdapterBase {
public:
    TabGroupAdapter(const dictionary_t& arguments, UI_Node* parent, const FactoryToken& token)
        : UI_TessNodeAdapterBase(parent, token) {
        tabs_ = IntrusivePtr<qorui::UI_TabGroup>(new qorui::UI_TabGroup);
        SetNode(tabs_);
        vorlen::array_t items;
        vorlen::get_value(arguments, "items"_name, items);
        for (const any_regular_t& item : items) {
            const auto& entry = item.cast<dictionary_t>();
            values_.push_back(vorlen::get_value(entry, "value"_name));
            tabs_->AddTab(Text(entry, "name"_name), IntrusivePtr<UI_Node>(new UI_Node));
        }
        const name_t cell = Cell(arguments, "bind"_name);
        if (!cell)
            return;
        Assemblage* assemblage = &token.GetAssemblage();
        tabs_->SetTabChangedCallback(
            [this, assemblage, cell](std::size_t tab) { assemblage->SetCell(cell, values_[tab]); });
        assemblage->BindView(cell, [this](const any_regular_t& current) {
            const auto found = std::find(values_.begin(), values_.end(), current);
            if (found != values_.end())
                tabs_->SelectTab(std::size_t(found - values_.begin()));
        });
    }

    void measure(vorlen::extents_t& result) override {
        result.horizontal().frame = {1, 1};
        result.vertical().frame = {int(std::ceil(tabs_->GetTabHeight())), 1};
        if (tabs_->CountTabs() > 0) {
            const auto last = tabs_->GetTabRect(tabs_->CountTabs() - 1);
            result.width() = int(std::ceil(last.x + last.width)) + 8;
        }
    }

private:
    IntrusivePtr<qorui::UI_TabGroup> tabs_;
    std::vector<any_regular_t> values_;
};

class RadioGroupAdapter : public UI_TessNodeAdapterBase {
public:
    RadioGroupAdapter(UI_Node* parent, const FactoryToken& token)
        : UI_TessNodeAdapterBase(parent, token) {
        SetNode(IntrusivePtr<qorui::UI_RadioGroup>(new qorui::UI_RadioGroup));
    }
};

} // namespace

std::shared_ptr<UI_TessNodeAdapterBase> MakeContainerWidget(name_t widget,
                                                            const dictionary_t& arguments,
                                                            UI_Node* parent,
                                                            const FactoryToken& token) {
    if (widget == "row"_name || widget == "column"_name || widget == "overlay"_name ||
        widget == "layout_script"_name)
        return std::make_shared<ArrangerAdapter>(parent, token);
    if (widget == "subview"_name)
        return std::make_shared<SubviewAdapter>(arguments, parent, token);
    if (widget == "group"_name)
        return std::make_shared<GroupAdapter>(arguments, parent, token);
    if (widget == "optional"_name)
        return std::make_shared<OptionalAdapter>(arguments, parent, token);
    if (widget == "tab_group"_name)
        return std::make_shared<TabGroupAdapter>(arguments, parent, token);
    if (widget == "radiogroup"_name)
        return std::make_shared<RadioGroupAdapter>(parent, token);
    return nullptr;
}

} // namespace qormarltess
