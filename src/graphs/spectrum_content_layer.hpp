#pragma once

#include "graphs/content_layer.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/intrusive_ptr.hpp"

namespace qoraudiofiltersui {

/// A layer that paints a live spectrum through its `SpectrumDraw`.
class SpectrumContentLayer : public ContentLayer {
public:
    explicit SpectrumContentLayer(qorcore::IntrusivePtr<SpectrumDraw> spectrum)
        : spectrum_(std::move(spectrum)) {}

    void Draw(qorui::penrig::Penrig* penrig, float) override { spectrum_->Draw(penrig); }
    void SetBounds(const qorcore::RectT<float>& content_rect, float scale) override {
        spectrum_->SetBounds(content_rect, scale);
    }
    const qorcore::IntrusivePtr<SpectrumDraw>& GetSpectrumDraw() const { return spectrum_; }

private:
    qorcore::IntrusivePtr<SpectrumDraw> spectrum_;
};

} // namespace qoraudiofiltersui
