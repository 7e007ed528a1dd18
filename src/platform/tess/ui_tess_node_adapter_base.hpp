#pragma once

#include "core/any_regular.hpp"
#include "layout/layout_attributes.hpp"
#include "layout/placeable.hpp"
#include "layout/tess.hpp"
#include "platform/tess/factory_token.hpp"
#include "platform/ui/ui_node.hpp"

#include <string>

namespace qormarltess {

using qorcore::IntrusivePtr;
using qorui::UI_Node;

/// A widget of a layout as the engine holds it: a placeable of the solver that owns one node
/// of the toolkit (or none, for `row` and `column`, which only arrange). It measures the node's
/// natural size and, once solved, moves the node to its place in the nearest ancestor that has
/// a node of its own.
class UI_TessNodeAdapterBase : public vorlen::placeable_t {
public:
    /// `parent` is the node the widget's node is to hang in; the token is copied.
    UI_TessNodeAdapterBase(UI_Node* parent, const FactoryToken& token);
    ~UI_TessNodeAdapterBase() override;

    UI_Node* GetNode() const { return node_.get(); }
    UI_Node* GetParentNode() const { return parent_; }
    /// Where the widget's children hang: its own node by default, none for pure arrangers.
    virtual UI_Node* GetChildParent() const { return node_.get(); }
    /// The node that the widget's `identifier` names: its own node by default.
    virtual UI_Node* GetControlNode() const { return node_.get(); }
    const FactoryToken& GetToken() const { return token_; }

    /// Appends the node to the parent, once; the engine does it for adapters that don't.
    void AddToParent();
    /// Gives the control node an id and enters it with the view holder, so that `GetControl`
    /// finds it.
    void UI_SetNodeID(const std::string& identifier);

    /// The layout attributes the script gave, before the widget is entered with the solver; a
    /// widget may fill in what it needs by default (a separator fills its row).
    virtual void AdjustAttributes(vorlen::layout_attributes_t& attributes) const;

    /// The `width` and `height` the script asked for; each that is above 0 replaces the
    /// natural length on its axis (a container still grows to hold its children).
    void SetRequestedSize(int width, int height) { requested_ = {width, height}; }

    void SetTessIterator(vorlen::tess_t::iterator it) { iterator_ = it; }
    vorlen::tess_t::iterator GetTessIterator() const { return iterator_; }

    void SetTypeName(std::string name) { typeName_ = std::move(name); }
    std::string type_name() const override { return typeName_; }

    /// The natural size by default; containers add their frames.
    void measure(vorlen::extents_t& result) override;
    /// Moves the node; positions arrive relative to the nearest ancestor with a node.
    void place(const vorlen::place_data_t& place) override;

protected:
    void SetNode(IntrusivePtr<UI_Node> node) { node_ = std::move(node); }
    /// The size the widget wants, in whole pixels; what `measure` reports.
    virtual std::pair<int, int> GetNaturalSize() const;

private:
    IntrusivePtr<UI_Node> node_;
    UI_Node* parent_;
    FactoryToken token_;
    vorlen::tess_t::iterator iterator_;
    std::string typeName_;
    std::pair<int, int> requested_{0, 0};
};

/// The base of adapters of widgets that the engine does not know itself, made by the client
/// widget adapter factory.
class UI_QORClientWidgetTessAdapter : public UI_TessNodeAdapterBase {
public:
    using UI_TessNodeAdapterBase::UI_TessNodeAdapterBase;
};

/// What the engine asks for a widget name it does not know: the adapter, or null when the
/// name means nothing to the client either. The caller takes ownership of the adapter.
using ClientWidgetAdapterFactory = std::function<UI_QORClientWidgetTessAdapter*(
    const vorlen::name_t& widget, const vorlen::dictionary_t& arguments, UI_Node* parent,
    const FactoryToken& token)>;

} // namespace qormarltess
