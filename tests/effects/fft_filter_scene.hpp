#pragma once

// An editor made through the registry in a headless window, and the FFT filter's editor over a
// table of the filter's parameters, with what the tests need to drive it with the mouse.

#include "effects/fft_filter_editor_view.hpp"
#include "effects/fft_filter_graph.hpp"
#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/ui/headless_window.hpp"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qafui_testing {

constexpr const char* kFFTFilterGuid = "4F327230-F04C-4C34-9EA5-A998B4459221";
constexpr float kFFTFilterSampleRate = 48000.0f;
constexpr int kFFTFilterParameterCount = 10 + 2 * 128;

/// The parameter values of a curve: the count over 128, then each point's frequency over Nyquist
/// and its fader position.
inline std::vector<float> FFTFilterValues(const std::vector<std::pair<float, float>>& points,
                                          float scale = 0.0f) {
    std::vector<float> values(kFFTFilterParameterCount, 0.0f);
    values[0] = 1.0f;                         // splines on
    values[1] = (4096.0f - 32.0f) / 32736.0f; // 4096 points
    values[2] = 1 * 0.125f;                   // Hann
    values[4] = scale;                        // logarithmic at 0
    values[9] = float(points.size()) * 0.0078125f;
    for (std::size_t i = 0; i < points.size(); ++i) {
        values[10 + 2 * i] = points[i].first / (kFFTFilterSampleRate * 0.5f);
        values[11 + 2 * i] = points[i].second;
    }
    return values;
}

/// A table shaped like the FFT filter's parameters that also answers for its response (flat at
/// the first point's level) when `answersResponse` is set, and counts how often it was asked.
class ResponseTableFilter : public qoraudiofilterhost::ParameterStoreFilter {
public:
    explicit ResponseTableFilter(const std::vector<float>& values)
        : ParameterStoreFilter(Descriptors()) {
        SetSampleRate(kFFTFilterSampleRate);
        LoadPreset(values);
        ClearCalls();
    }

    int GetResponseCurve(int channel, int pointCount, std::vector<float>& out) override {
        ++responseRequests;
        if (channel != 0 || pointCount < 2 || !answersResponse)
            return 0;
        out.assign(std::size_t(pointCount), GetParameterValue(11));
        return 1;
    }

    int responseRequests = 0;
    bool answersResponse = true;

private:
    static std::vector<qoraudiofilterhost::ParameterDescriptor> Descriptors() {
        std::vector<qoraudiofilterhost::ParameterDescriptor> parameters = {
            {"Splines"},  {"FFTSize"},   {"WindowType"}, {"CurveWrite"}, {"Scale"},
            {"RangeLow"}, {"RangeHigh"}, {"Reserved7"},  {"Reserved8"},  {"PointCount"}};
        for (int i = 0; i < 128; ++i) {
            parameters.push_back({"X" + std::to_string(i)});
            parameters.push_back({"Y" + std::to_string(i)});
        }
        return parameters;
    }
};

/// The texts of the static texts under `node`, depth first.
inline std::vector<std::string> StaticTexts(qorui::UI_Node& node) {
    std::vector<std::string> texts;
    if (auto* text = dynamic_cast<qorui::UI_StaticText*>(&node))
        texts.push_back(text->GetText());
    for (const auto& child : node.GetChildren())
        for (std::string& text : StaticTexts(*child))
            texts.push_back(std::move(text));
    return texts;
}

/// The editor of `guid` on a filter, made by the registry (a `View`, or the constructor
/// throws), in a window of its size, with the library initialised while the scene lives.
template <class View>
class EditorScene {
public:
    EditorScene(const char* guid, std::shared_ptr<qoraudiofilterhost::AudioFilter> theFilter,
                float scale = 1.0f)
        : supplier(scale), filter(std::move(theFilter)) {
        qoraudiofiltersui::Initialize(&supplier);
        auto made =
            qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(guid, filter);
        view = qorcore::IntrusivePtr<View>(dynamic_cast<View*>(made.get()));
        if (!view)
            throw std::runtime_error(std::string("the registry made no such editor for ") + guid);
        Show(scale);
    }
    /// An editor made by `make` rather than by the registry (a class the registry does not
    /// choose in this build).
    EditorScene(const std::function<qorcore::IntrusivePtr<View>(
                    std::shared_ptr<qoraudiofilterhost::AudioFilter>)>& make,
                std::shared_ptr<qoraudiofilterhost::AudioFilter> theFilter, float scale = 1.0f)
        : supplier(scale), filter(std::move(theFilter)) {
        qoraudiofiltersui::Initialize(&supplier);
        view = make(filter);
        Show(scale);
    }
    ~EditorScene() {
        window->GetRoot()->RemoveAllChildren();
        view.reset();
        qoraudiofiltersui::Terminate();
    }
    EditorScene(const EditorScene&) = delete;
    EditorScene& operator=(const EditorScene&) = delete;

    template <class T = qorui::UI_Node>
    T& Find(const char* id) const {
        T* node = dynamic_cast<T*>(view->FindNodeByID(id));
        if (!node)
            throw std::runtime_error(std::string("no node ") + id);
        return *node;
    }
    void Click(const char* id) {
        auto& node = Find(id);
        const auto at =
            node.UI_LocalToGlobalF({node.GetFrame().width / 2, node.GetFrame().height / 2});
        window->Click(at.x, at.y);
    }
    /// One editor tick.
    void Tick() { window->AdvanceTime(0.01); }
    void Show(float scale) {
        window = std::make_unique<qorui::HeadlessWindow>(view->GetFrame().width,
                                                         view->GetFrame().height, scale);
        window->AddNode(view);
    }

    qorui::penrig::CairoSupplier supplier;
    std::shared_ptr<qoraudiofilterhost::AudioFilter> filter;
    qorcore::IntrusivePtr<View> view;
    std::unique_ptr<qorui::HeadlessWindow> window;
};

/// The FFT filter's editor, with its graph.
class FFTFilterScene : public EditorScene<qoraudiofiltersui::FFTFilterEditorView> {
public:
    explicit FFTFilterScene(std::shared_ptr<qoraudiofilterhost::AudioFilter> theFilter,
                            float scale = 1.0f)
        : EditorScene(kFFTFilterGuid, std::move(theFilter), scale) {}

    qoraudiofiltersui::FFTFilterGraph& Graph() const {
        if (!view->GetGraph())
            throw std::runtime_error("the editor has no graph");
        return *view->GetGraph();
    }
    /// Where point `index` of the curve is drawn, in window coordinates.
    qorcore::PointT<float> PointInWindow(std::size_t index) const {
        const auto& point = Graph().GetCurvePoints().at(index);
        return Graph().UI_LocalToGlobalF(Graph().GetPixelForCoordinatePair(point.position));
    }
};

} // namespace qafui_testing
