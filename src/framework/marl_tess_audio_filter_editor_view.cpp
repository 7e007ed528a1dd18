#include "framework/marl_tess_audio_filter_editor_view.hpp"

#include "framework/adapter_factory.hpp"
#include "framework/editor_resources.hpp"
#include "framework/image_provider.hpp"
#include "framework/library.hpp"
#include "framework/resource_manager.hpp"
#include "platform/core/ascii_case.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/core/trace.hpp"
#include "platform/host/audio_filter.hpp"
#include "platform/skins/skins.hpp"
#include "platform/tess/ui_tess.hpp"
#include "platform/ui/ui_node_manager.hpp"
#include "sheet/sheet.hpp"

#include <cmath>
#include <sstream>

namespace qoraudiofiltersui {

namespace {

using vorlen::any_regular_t;
using vorlen::name_t;

/// The engine as the view uses it while it builds: it reads the scripts that a layout inserts
/// by name from the library's resources.
class TessEngine : public qormarltess::UI_Tess {
public:
    TessEngine(const qorui::penrig::SupplierInterface* supplier, ResourceManager* resources,
               WindowVariant variant)
        : UI_Tess(supplier, variant), resources_(resources) {}

protected:
    std::vector<std::uint8_t> GetLayoutScript(name_t name) override {
        std::vector<char> bytes;
        if (!resources_ || !resources_->HasBinary(name.c_str(), "tss") ||
            !resources_->GetBinary(name.c_str(), "tss", bytes))
            return {};
        return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
    }

private:
    ResourceManager* resources_;
};

name_t IndexedCell(const char* prefix, int index) {
    return name_t((prefix + std::to_string(index)).c_str());
}

std::string ValueText(float value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

void TraceOutOfRange(qorcore::debug::TraceSite& site, const char* category, const char* origin,
                     int index, float value) {
    if (site.IsEnabled(category, 5))
        qorcore::debug::Trace(5, category,
                              std::string(origin) + " parameter out of range: index = " +
                                  std::to_string(index) + ", value = " + ValueText(value) + "\n");
}

} // namespace

IntrusivePtr<MarlTessAudioFilterEditorView> MarlTessAudioFilterEditorView::Create(
    std::shared_ptr<AudioFilter> filter, const qorui::penrig::SupplierInterface* supplier,
    std::string resourceName, ResourceManager* resourceManager, bool hasSheet) {
    IntrusivePtr<MarlTessAudioFilterEditorView> view(new MarlTessAudioFilterEditorView(
        std::move(filter), supplier, std::move(resourceName), resourceManager, hasSheet));
    if (!view)
        qorcore::config::DoThrowNullPtrException("MarlTessAudioFilterEditorView");
    view->CreateLayout();
    return view;
}

MarlTessAudioFilterEditorView::MarlTessAudioFilterEditorView(
    std::shared_ptr<AudioFilter> filter, const qorui::penrig::SupplierInterface* supplier,
    std::string resourceName, ResourceManager* resourceManager, bool hasSheet)
    : AudioFilterEditorViewBase(std::move(filter)), sheet_(std::make_shared<vorlen::sheet_t>()),
      hasSheet_(hasSheet) {
    const bool newerLook = qorui::skins::IsRunningV7OrBeyond();
    const EditorResources texts =
        ChooseEditorResources(resourceManager, resourceName, hasSheet, newerLook);

    InitStandardFunctionPack();
    InitStandardReflectedVariableSet();
    SetupVirtualMachine(*sheet_);

    // A missing resource is no error here: the editor comes up without that part.
    if (hasSheet && !texts.sheetText.empty()) {
        TessEngine engine(supplier, resourceManager, TessEngine::WindowVariant::kNone);
        std::istringstream stream(texts.sheetText);
        // Errors name the script as its file is named: the resource in upper case.
        engine.ParseMarlScript(stream, sheet_, "property model description",
                               qorcore::ToUpperAscii(resourceName) + ".mrl");
    }

    AudioFilter& theFilter = *GetFilter();
    const int count = int(theFilter.GetParameterCount());
    const bool wasInSync = inSync_;
    inSync_ = true;
    if (hasSheet) {
        for (int i = 0; i < count; ++i) {
            const name_t in = IndexedCell("in", i);
            if (sheet_->has_input(in))
                sheet_->set(in, any_regular_t(0.0));
        }
        WriteStandardCells();
    }
    sheet_->reinitialize();
    sheet_->update();
    if (hasSheet) {
        for (int i = 0; i < count; ++i) {
            const name_t out = IndexedCell("out", i);
            // The watch lives as long as the sheet; the connection object is not kept.
            if (sheet_->has_output(out))
                sheet_->monitor_value(
                    out, [this, i](const any_regular_t& value) { OnParameterChanged(value, i); });
        }
    }

    if (!texts.layoutText.empty()) {
        TessEngine engine(supplier, resourceManager, TessEngine::WindowVariant::kDefault);
        engine.SetUseSpectrumPolicy(newerLook);
        if (resourceManager) {
            engine.SetResourceProvider([resourceManager](name_t name) {
                const std::string text = name.c_str();
                const std::size_t point = text.find('.');
                const std::string base = text.substr(0, point);
                const std::string extension =
                    point == std::string::npos ? "" : text.substr(point + 1);
                std::vector<char> bytes;
                if (!resourceManager->HasBinary(base, extension) ||
                    !resourceManager->GetBinary(base, extension, bytes))
                    return std::vector<std::uint8_t>();
                return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
            });
        }
        if (const ImageProvider* images = GetLibraryImageProvider())
            engine.SetImageSupplyFunction(
                [images](const std::string& name) { return images->GetImage(name); });
        engine.SetLayoutSheetSetup(
            [this](vorlen::sheet_t& layoutSheet) { SetupVirtualMachine(layoutSheet); });
        engine.SetClientWidgetAdapterFactory(*GetLibraryAdapterFactory());
        std::istringstream stream(texts.layoutText);
        root_ = engine.ParseTessScript(stream, sheet_,
                                       qorcore::ToUpperAscii(texts.layoutName) + ".tss");
        if (!root_)
            qorcore::config::DoThrowNullPtrException("UI_QORTessRoot");

        qormarltess::UI_TessViewHolder& holder = root_->GetTessViewHolder();
        root_->RecalcLayout();
        holder.GetVisibleChangeQueue().Process();
        holder.GetVisibleChangeQueue().ConnectAfterBatch([this] { RecalcLayout(); });
    }

    if (hasSheet) {
        if (sheet_->has_input(name_t("sample_rate")))
            sheet_->set(name_t("sample_rate"), any_regular_t(double(theFilter.GetSampleRate())));
        sheet_->reinitialize();
    }
    AutoHookupParameterMap();
    inSync_ = wasInSync;

    qoraudiofilterhost::IAudioFilterHost* host = theFilter.GetAudioFilterHost();
    if (hasSheet && host && host->GetTimeDisplayInfo(&timeDisplayInfo_)) {
        const auto& info = timeDisplayInfo_;
        timeFormat_.clear();
        timeFormat_[name_t("sample_rate")] = std::trunc(double(theFilter.GetSampleRate()));
        timeFormat_[name_t("format")] = double(info.format);
        timeFormat_[name_t("current_fps")] = double(info.currentFrameRate);
        timeFormat_[name_t("custom_fps")] = double(info.customFrameRate);
        timeFormat_[name_t("beatinfo_ticks_per_quarter")] = double(info.ticksPerQuarter);
        timeFormat_[name_t("beatinfo_beats_per_minute")] = info.beatsPerMinute;
        timeFormat_[name_t("beatinfo_beats_per_bar")] = double(info.beatsPerBar);
        timeFormat_[name_t("beatinfo_note_len")] = double(info.noteLength);
        timeFormat_[name_t("beatinfo_beat_offset_ms")] = info.beatOffsetMilliseconds;
        timeFormatDirty_ = true;
    }

    // The first sync takes the suspended branch and so a full refresh.
    lastSuspended_ = !theFilter.IsSuspended();
    MarlTessAudioFilterEditorView::SyncParameters();
    SetStateFlags(16, true);

    auto themeFunction = std::make_shared<std::function<void()>>([this] { OnThemeChanged(); });
    onThemeChanged_.push_back(themeFunction);
    themeConnection_ = qorui::skins::InstallThemeChangedFunction(*themeFunction);
}

MarlTessAudioFilterEditorView::~MarlTessAudioFilterEditorView() {
    themeConnection_.Disconnect();
    // The widgets go before the sheet they hold connections into.
    if (root_) {
        ChildRemove(root_.get());
        qormarltess::UI_Tess::Release(root_);
    }
    sheet_.reset();
    editedParameters_.clear();
    timeFormat_.clear();
    arrayFunctions_.clear();
    dictionaryFunctions_.clear();
    root_.reset();
    onThemeChanged_.clear();
}

IntrusivePtr<qormarltess::UI_QORTessRoot> MarlTessAudioFilterEditorView::GetTessRoot() const {
    return root_;
}

void MarlTessAudioFilterEditorView::CreateLayout() {
    if (!root_)
        return;
    root_->UI_SetVisible(true);
    ChildPushBack(root_);
    SetFrame({GetFrame().x, GetFrame().y, root_->GetFrame().width, root_->GetFrame().height});
    root_->SetFrame({0, 0, root_->GetFrame().width, root_->GetFrame().height});
    root_->SetDrawOutline(false);
}

void MarlTessAudioFilterEditorView::RecalcLayout() {
    if (!root_)
        qorcore::config::DoThrowNullPtrException("UI_QORTessRoot");
    root_->RecalcLayout();
    const auto& solved = root_->GetFrame();
    const auto& frame = GetFrame();
    if (int(frame.width) != int(solved.width) || int(frame.height) != int(solved.height)) {
        SetFrame({frame.x, frame.y, solved.width, solved.height});
        SendContentSizeChangedSignal();
    }
}

void MarlTessAudioFilterEditorView::WriteStandardCells() {
    const AudioFilter& filter = *GetFilter();
    if (sheet_->has_input(name_t("sample_rate")))
        sheet_->set(name_t("sample_rate"), any_regular_t(double(filter.GetSampleRate())));
    if (sheet_->has_input(name_t("current_duration")))
        sheet_->set(name_t("current_duration"), any_regular_t(filter.GetDuration()));
}

void MarlTessAudioFilterEditorView::SyncParameters() {
    AudioFilterEditorViewBase::SyncParameters();
    AudioFilter& filter = *GetFilter();

    if (!editedParameters_.empty() &&
        (qorui::UI_NodeManager::Get().GetCurrentMouseButtonState() & 7) == 0) {
        pointerPressed_ = false;
        for (int index : editedParameters_) // a std::set: rising order
            filter.EndParameterEdit(index);
        editedParameters_.clear();
    }

    const bool suspended = filter.IsSuspended();
    const bool suspendedChanged = suspended != lastSuspended_;
    if (suspendedChanged) {
        lastSuspended_ = suspended;
        lastDirtyCount_ = filter.GetParameterDirtyCount() - 1;
    }
    if (!hasSheet_)
        return;

    const bool wasInSync = inSync_;
    inSync_ = true;
    try {
        if (sheet_) {
            bool changed = false;
            if (filter.GetParameterDirtyCount() != lastDirtyCount_) {
                changed = true;
                static qorcore::debug::TraceSite site;
                const int count = int(filter.GetParameterCount());
                for (int i = 0; i < count; ++i) {
                    const name_t in = IndexedCell("in", i);
                    if (!sheet_->has_input(in))
                        continue;
                    const float value = filter.GetParameterValue(i);
                    if (value < 0.0f || value > 1.0f)
                        TraceOutOfRange(site, "MarlTessAudioFilterEditorView::SyncParameters",
                                        "(from component)", i, value);
                    sheet_->set(in, any_regular_t(double(value)));
                }
            }
            if (timeFormatDirty_) {
                if (sheet_->has_input(name_t("time_format")))
                    sheet_->set(name_t("time_format"), any_regular_t(timeFormat_));
                timeFormatDirty_ = false;
                changed = true;
            }
            if (suspendedChanged && sheet_->has_input(name_t("suspended")))
                sheet_->set(name_t("suspended"), any_regular_t(suspended));
            if (changed) {
                WriteStandardCells();
                lastDirtyCount_ = filter.GetParameterDirtyCount();
                sheet_->reinitialize();
                sheet_->update();
                if (root_)
                    root_->GetTessViewHolder().GetRootBehavior()();
            }
        }
    } catch (...) {
        inSync_ = wasInSync;
        throw;
    }
    inSync_ = wasInSync;
}

void MarlTessAudioFilterEditorView::UI_PressInside(qorui::UI_Node&) {
    pointerPressed_ = true;
}

void MarlTessAudioFilterEditorView::OnParameterChanged(const any_regular_t& value, int index) {
    if (inSync_)
        return;
    const float normalised = float(value.cast<double>());
    AudioFilter& filter = *GetFilter();
    if (normalised == filter.GetParameterValue(index))
        return;
    if (pointerPressed_ && !filter.IsParameterBeingEdited(index) &&
        !editedParameters_.contains(index)) {
        editedParameters_.insert(index);
        filter.BeginParameterEdit(index);
    }
    filter.SetParameterValue(index, normalised);
    if (normalised < 0.0f || normalised > 1.0f) {
        static qorcore::debug::TraceSite site;
        TraceOutOfRange(site, "MarlTessAudioFilterEditorView::OnParameterChanged", "(from UI)",
                        index, normalised);
    }
}

void MarlTessAudioFilterEditorView::ControlReleased() {
    GetFilter()->EndParameterEdit(-1);
}

any_regular_t MarlTessAudioFilterEditorView::Trace(const any_regular_t& value) {
    static qorcore::debug::TraceSite site;
    constexpr const char* category = "MarlTessAudioFilterEditorView::Trace";
    if (site.IsEnabled(category, 5)) {
        std::ostringstream out;
        out << value << "\n";
        qorcore::debug::Trace(5, category, out.str());
    }
    return value;
}

} // namespace qoraudiofiltersui
