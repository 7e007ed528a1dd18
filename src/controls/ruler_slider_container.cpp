#include "controls/ruler_slider_container.hpp"

#include "controls/fader_slider.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

namespace qoraudiofiltersui {

using qorcore::PointT;
using qorcore::RectT;

namespace {

constexpr float kHorizontalMargin = 12.0f; // the thumb's overhang at both ends
constexpr float kVerticalMargin = 16.0f;
constexpr float kHorizontalTextRoom = 10.0f;
constexpr float kVerticalTextRoom = 20.0f;
constexpr float kNewerLookRoom = 8.0f;
constexpr float kNewerLookInset = 4.0f;
constexpr float kTextGap = 2.0f;

int RoundToInt(float v) {
    return int(std::floor(v + 0.5f));
}

} // namespace

RulerSliderContainer::RulerSliderContainer(qorcore::IntrusivePtr<qorui::UI_Slider> slider)
    : slider_(qorcore::config::ThrowIfNull(std::move(slider), "UI_Slider")) {
    ChildPushBack(slider_);
}

void RulerSliderContainer::SetRuler(qorcore::IntrusivePtr<qorui::RulerBase> ruler,
                                    RulerPlacement placement, RulerTextPlacement textPlacement) {
    ruler_ = std::move(ruler);
    if (ruler_)
        ruler_->SetVertical(!IsHorizontal());
    rulerTextPlacement_ = textPlacement;
    SetRulerPlacement(placement); // lays out again
}

void RulerSliderContainer::SetRulerPlacement(RulerPlacement placement) {
    rulerPlacement_ = placement;
    ticksAtStart_ = placement == kRulerPlacementLeftTop || placement == kRulerPlacementBoth;
    ticksAtEnd_ = placement == kRulerPlacementRightBottom || placement == kRulerPlacementBoth;
    RecalcLayout();
}

void RulerSliderContainer::SetRulerTextPlacement(RulerTextPlacement placement) {
    rulerTextPlacement_ = placement;
    RecalcLayout();
}

float RulerSliderContainer::GetSliderDefaultSize() const {
    if (dynamic_cast<const FaderSlider*>(slider_.get()))
        return 18.0f;
    return qorui::UI_Slider::GetDefaultSize(slider_->GetDirection());
}

float RulerSliderContainer::GetBestSize() const {
    float size = GetSliderDefaultSize();
    if (ruler_ && rulerTextPlacement_ != kRulerTextPlacementNone)
        size += IsHorizontal() ? kHorizontalTextRoom : kVerticalTextRoom;
    if (qorui::skins::IsRunningV7OrBeyond())
        size += kNewerLookRoom;
    return size;
}

RectT<float> RulerSliderContainer::GetSliderRect(const RectT<float>& bounds) const {
    const float inset = qorui::skins::IsRunningV7OrBeyond() ? kNewerLookInset : 0.0f;
    const float size = GetSliderDefaultSize();
    if (IsHorizontal()) {
        const float width = bounds.width - kHorizontalMargin;
        return {std::floor((bounds.width - width) * 0.5f), std::floor(bounds.height - size - inset),
                width, size};
    }
    const float height = bounds.height - kVerticalMargin;
    float x = std::floor((bounds.width - size) * 0.5f);
    if (rulerTextPlacement_ == kRulerTextPlacementLeftTop)
        x = bounds.width - size - inset;
    else if (rulerTextPlacement_ == kRulerTextPlacementRightBottom)
        x = inset;
    return {x, std::floor((bounds.height - height) * 0.5f), size, height};
}

void RulerSliderContainer::RecalcLayout() {
    if (ruler_)
        ruler_->HideAllNumbers(rulerTextPlacement_ == kRulerTextPlacementNone);
    UpdateSize(GetBounds());
    EmitInvalidate();
}

void RulerSliderContainer::SetSlideableDrawInsetPercent(float percent) {
    slider_->SetSlideableDrawInsetPercent(percent);
    RecalcLayout();
}

void RulerSliderContainer::UI_SizeChanged() {
    UI_SubView::UI_SizeChanged();
    RecalcLayout();
}

void RulerSliderContainer::UI_SetToolTip(const std::string& text) {
    UI_SubView::UI_SetToolTip(text);
    slider_->UI_SetToolTip(text);
    if (qorui::UI_Button* thumb = slider_->GetSliderThumb())
        thumb->UI_SetToolTip(text);
}

void RulerSliderContainer::UpdateSize(const RectT<float>& bounds) {
    slider_->SetFrame(GetSliderRect(bounds));
    if (!ruler_)
        return;
    const RectT<float> slideable = slider_->GetSlideableDrawRect();
    const PointT<float> origin = UI_GlobalToLocalF(slider_->UI_LocalToGlobalF(slideable.Origin()));
    const float x = std::floor(origin.x);
    const float y = std::floor(origin.y);
    const float width = std::floor(slideable.width + 0.5f);
    const float height = std::floor(slideable.height + 0.5f);
    const int left = RoundToInt(x);
    const int top = RoundToInt(y);
    const int right = RoundToInt(x + width);
    const int bottom = RoundToInt(y + height);
    if (!(width > 0 && height > 0))
        return;
    // The newer look lets the major ticks stand out beyond the groove on the start side.
    const int lead = qorui::skins::IsRunningV7OrBeyond() ? 4 : 0;
    if (IsHorizontal()) {
        ruler_->SetPixelRange(left, right - 1);
        const int mid = int(std::floor(height * 0.5f + float(top) + 0.5f));
        ruler_->SetMajorTickExtent(ticksAtStart_ ? top - lead : mid,
                                   ticksAtEnd_ ? bottom - 2 : mid);
        ruler_->SetMinorTickExtent(ticksAtStart_ ? top : mid, ticksAtEnd_ ? bottom - 4 : mid);
    } else {
        ruler_->SetPixelRange(top, bottom);
        const int mid = int(std::floor(width * 0.5f + float(left) + 0.5f));
        ruler_->SetMajorTickExtent(ticksAtStart_ ? left - lead : mid,
                                   ticksAtEnd_ ? right - 4 : mid);
        ruler_->SetMinorTickExtent(ticksAtStart_ ? left : mid, ticksAtEnd_ ? right - 4 : mid);
    }
}

void RulerSliderContainer::UI_Draw(qorui::Penrig* penrig) {
    UI_ClipToSelf(penrig);
    // Numbers go under the slider, whose thumb may reach over them; the ticks cross the groove
    // and so are drawn over it, leaving the thumb clear.
    if (ruler_)
        DrawRuler(*penrig);
    UI_SubView::UI_Draw(penrig);
    if (!ruler_)
        return;
    const qorui::DrawSliderParameters parameters = slider_->GetDrawSliderParameters();
    const PointT<float> offset = slider_->GetFrame().Origin();
    const RectT<float> thumb = parameters.thumb.Offset(offset);
    const bool horizontal = parameters.horizontal;
    qorcore::ColorRGBA color = ruler_->GetDrawColor();
    if (slider_->IsDisabled())
        color = color.WithAlpha(color.alpha * 0.45f);
    penrig->SetPen(1.0f, color);
    auto ticks = [&](const std::vector<int>& pixels, qorui::RulerBase::Extent extent, float alpha) {
        if (extent.start == extent.end)
            return;
        penrig->SetAlpha(alpha);
        for (int pixel : pixels) {
            const float at = float(pixel) + 0.5f;
            const bool underThumb = horizontal ? at > thumb.x - 1 && at < thumb.Right() + 1
                                               : at > thumb.y - 1 && at < thumb.Bottom() + 1;
            if (underThumb)
                continue;
            if (horizontal)
                penrig->DrawLine(at, float(extent.start), at, float(extent.end));
            else
                penrig->DrawLine(float(extent.start), at, float(extent.end), at);
        }
    };
    ticks(ruler_->GetMinorPixels(), ruler_->GetMinorTickExtent(), 0.7f);
    ticks(ruler_->GetMajorPixels(), ruler_->GetMajorTickExtent(), 1.0f);
    penrig->SetAlpha(1.0f);
}

void RulerSliderContainer::DrawRuler(qorui::Penrig& penrig) const {
    if (ruler_->AreNumbersHidden())
        return;
    const RectT<float> bounds = GetBounds();
    const bool horizontal = IsHorizontal();
    const qorui::RulerBase::Extent major = ruler_->GetMajorTickExtent();
    const qorui::RulerBase::Extent minor = ruler_->GetMinorTickExtent();
    // The numbers keep off the slider, where its thumb would cover them, and off the ticks;
    // a horizontal slider's flat top may run under them by a little.
    const RectT<float> slider = slider_->GetFrame();
    const float textStart =
        std::min(float(std::min({major.start, major.end, minor.start, minor.end})),
                 horizontal ? slider.y + kTextGap : slider.x);
    const float textEnd =
        std::max(float(std::max({major.start, major.end, minor.start, minor.end})), slider.Right());
    qorcore::ColorRGBA color = ruler_->GetDrawColor();
    if (slider_->IsDisabled())
        color = color.WithAlpha(color.alpha * 0.45f);
    penrig.SetFont(qorui::penrig::Font(ruler_->GetFontSize()));
    penrig.SetColor(color);
    const float textHeight = std::ceil(ruler_->GetFontSize() * 1.3f);
    const bool textAfter = !horizontal && rulerTextPlacement_ == kRulerTextPlacementRightBottom;

    // Where a text of this width goes for a tick at `center`; `anchor` -1 keeps it starting
    // at the tick, 1 ending there, 0 centred on it.
    auto place = [&](float width, float center, int anchor) -> RectT<float> {
        if (horizontal) {
            const float x = anchor < 0   ? center
                            : anchor > 0 ? center - width
                                         : std::round(center - width / 2);
            return {x, textStart - kTextGap / 2 - textHeight, width, textHeight};
        }
        const float y = anchor < 0   ? center
                        : anchor > 0 ? center - textHeight
                                     : std::round(center - textHeight / 2);
        const float x = textAfter ? textEnd + kTextGap : textStart - kTextGap - width;
        return {x, y, width, textHeight};
    };
    std::vector<RectT<float>> taken;
    auto draw = [&](const std::string& text, RectT<float> r, bool shiftInside) {
        // Along the ruler a number that doesn't fit whole is left out (labels are moved in);
        // across it the text box may be taller than the room, and is moved in.
        const bool inside = horizontal ? r.x >= bounds.x && r.Right() <= bounds.Right()
                                       : r.y >= bounds.y && r.Bottom() <= bounds.Bottom();
        if (!inside && !shiftInside)
            return;
        r.x = std::clamp(r.x, bounds.x, std::max(bounds.x, bounds.Right() - r.width));
        r.y = std::clamp(r.y, bounds.y, std::max(bounds.y, bounds.Bottom() - r.height));
        for (const RectT<float>& t : taken)
            if (t.Inset(-2, -1).Intersects(r))
                return;
        taken.push_back(r);
        const auto align = horizontal || textAfter ? qorui::penrig::HorizontalAlignment::kLeft
                                                   : qorui::penrig::HorizontalAlignment::kRight;
        penrig.DrawText(text, r, align, qorui::penrig::VerticalAlignment::kCenter, false);
    };
    // The end labels first: the numbers give way to them.
    const int pixel1 = ruler_->GetPixel1();
    const int pixel2 = ruler_->GetPixel2();
    const int sign = pixel1 <= pixel2 ? 1 : -1;
    for (const auto& [label, pixel, anchor] : {std::tuple{ruler_->GetLabel1(), pixel1, -sign},
                                               std::tuple{ruler_->GetLabel2(), pixel2, sign}})
        if (!label.empty())
            draw(label, place(std::ceil(penrig.MeasureStringWidth(label)), float(pixel), anchor),
                 true);
    for (double value : ruler_->GetMajorValues()) {
        const std::string text = ruler_->FormatValue(value);
        const float center = float(ruler_->GetPixelFromValue(value)) + 0.5f;
        draw(text, place(std::ceil(penrig.MeasureStringWidth(text)), center, 0), false);
    }
}

} // namespace qoraudiofiltersui
