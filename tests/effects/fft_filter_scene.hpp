#pragma once

// The FFT filter editor made through the registry in a headless window, over a table of the
// filter's parameters, and what the tests need to drive it with the mouse.

#include "effects/fft_filter_editor_view.hpp"
#include "effects/fft_filter_graph.hpp"
#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"
#include "platform/ui/headless_window.hpp"

#include <algorithm>
#include <cmath>
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

/// A table shaped like the FFT filter's parameters that also answers for its response: the
/// points joined by straight lines over the visible range (parameters 5 and 6) on the graph's
/// scale (parameter 4), and counts how often it was asked.
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
        const double nyquist = GetSampleRate() * 0.5;
        const double low = GetParameterValue(5) * nyquist;
        const double high = GetParameterValue(6) * nyquist;
        const bool logarithmic = GetParameterValue(4) < 0.5f;
        const int count = std::min(128, int(GetParameterValue(9) * 128.0f));
        out.assign(std::size_t(pointCount), 0.0f);
        for (int i = 0; i < pointCount; ++i) {
            const double t = double(i) / double(pointCount);
            const double hz =
                logarithmic && low > 0.0 ? low * std::pow(high / low, t) : low + (high - low) * t;
            float level = count > 0 ? GetParameterValue(11) : 0.0f;
            for (int p = 0; p + 1 < count; ++p) {
                const double x0 = GetParameterValue(10 + 2 * p) * nyquist;
                const double x1 = GetParameterValue(12 + 2 * p) * nyquist;
                if (hz >= x0 && hz <= x1 && x1 > x0) {
                    const double f = (hz - x0) / (x1 - x0);
                    level = float(GetParameterValue(11 + 2 * p) * (1.0 - f) +
                                  GetParameterValue(13 + 2 * p) * f);
                } else if (hz > x1) {
                    level = GetParameterValue(13 + 2 * p);
                }
            }
            out[std::size_t(i)] = level;
        }
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

/// The editor of a filter, made by the registry, in a window of its size.
class FFTFilterScene {
public:
    explicit FFTFilterScene(std::shared_ptr<qoraudiofilterhost::AudioFilter> theFilter,
                            float scale = 1.0f)
        : supplier(scale), filter(std::move(theFilter)) {
        qoraudiofiltersui::Initialize(&supplier);
        auto made = qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(
            kFFTFilterGuid, filter);
        view = qorcore::IntrusivePtr<qoraudiofiltersui::FFTFilterEditorView>(
            dynamic_cast<qoraudiofiltersui::FFTFilterEditorView*>(made.get()));
        if (!view)
            throw std::runtime_error("the registry made no FFT filter editor");
        window = std::make_unique<qorui::HeadlessWindow>(view->GetFrame().width,
                                                         view->GetFrame().height, scale);
        window->AddNode(view);
    }
    ~FFTFilterScene() {
        window->GetRoot()->RemoveAllChildren();
        view.reset();
        qoraudiofiltersui::Terminate();
    }
    FFTFilterScene(const FFTFilterScene&) = delete;
    FFTFilterScene& operator=(const FFTFilterScene&) = delete;

    qoraudiofiltersui::FFTFilterGraph& Graph() const {
        if (!view->GetGraph())
            throw std::runtime_error("the editor has no graph");
        return *view->GetGraph();
    }

    template <class T>
    T& Find(const char* id) const {
        T* node = dynamic_cast<T*>(view->FindNodeByID(id));
        if (!node)
            throw std::runtime_error(std::string("no node ") + id);
        return *node;
    }

    qorcore::PointT<float> CentreOf(const char* id) const {
        auto& node = Find<qorui::UI_Node>(id);
        return node.UI_LocalToGlobalF({node.GetFrame().width / 2, node.GetFrame().height / 2});
    }
    void Click(const char* id) {
        const auto at = CentreOf(id);
        window->Click(at.x, at.y);
    }

    /// Where point `index` of the curve is drawn, in window coordinates.
    qorcore::PointT<float> PointInWindow(std::size_t index) const {
        const auto& point = Graph().GetCurvePoints().at(index);
        return Graph().UI_LocalToGlobalF(Graph().GetPixelForCoordinatePair(point.position));
    }

    /// One editor tick.
    void Tick() { window->AdvanceTime(0.01); }

    qorui::penrig::CairoSupplier supplier;
    std::shared_ptr<qoraudiofilterhost::AudioFilter> filter;
    qorcore::IntrusivePtr<qoraudiofiltersui::FFTFilterEditorView> view;
    std::unique_ptr<qorui::HeadlessWindow> window;
};

} // namespace qafui_testing
