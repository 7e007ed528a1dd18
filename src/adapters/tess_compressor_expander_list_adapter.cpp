#include "adapters/tess_compressor_expander_list_adapter.hpp"

#include "adapters/adapter_arguments.hpp"
#include "platform/tess/assemblage.hpp"

#include <cmath>
#include <string>

namespace qoraudiofiltersui {

using namespace adapter_arguments;
using vorlen::any_regular_t;
using vorlen::dictionary_t;
using vorlen::name_t;
using vorlen::operator""_name;

TessCompressorExpanderListAdapter::TessCompressorExpanderListAdapter(
    const dictionary_t& arguments, qorui::UI_Node* parent, const qormarltess::FactoryToken& token)
    : UI_QORClientWidgetTessAdapter(parent, token) {
    list_ = qorcore::MakeIntrusive<CompressorExpanderList>();
    float width = 0.0f;
    if (Read(arguments, "width"_name, width))
        width_ = width;
    const auto [naturalWidth, naturalHeight] = GetNaturalSize();
    list_->SetFrame({0.0f, 0.0f, float(naturalWidth), float(naturalHeight)});
    SetNode(list_);
    std::string identifier;
    if (vorlen::get_value(arguments, "identifier"_name, identifier))
        UI_SetNodeID(identifier);
    AddToParent();
    if (const name_t cell = Cell(arguments, "bind"_name))
        token.GetAssemblage().BindView(cell,
                                       [this](const any_regular_t& value) { ApplyPoints(value); });
}

TessCompressorExpanderListAdapter::~TessCompressorExpanderListAdapter() = default;

std::pair<int, int> TessCompressorExpanderListAdapter::GetNaturalSize() const {
    const qorcore::PointT<float> best = list_->GetBestSize();
    const float width = width_ ? *width_ : best.x;
    return {int(std::floor(width + 0.5f)), int(std::floor(best.y + 0.5f))};
}

void TessCompressorExpanderListAdapter::ApplyPoints(const any_regular_t& value) {
    CompressorExpanderList::Points points;
    if (!value.is<vorlen::empty_t>())
        for (const auto& [input, output] : ReadCurvePoints(value.cast<dictionary_t>()))
            points.emplace_back(float(input), float(output));
    list_->SetCurve(points);
}

} // namespace qoraudiofiltersui
