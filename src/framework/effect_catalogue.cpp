#include "framework/effect_catalogue.hpp"
#include "platform/core/ascii_case.hpp"

#include "framework/editor_resources.hpp"
#include "framework/library.hpp"
#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "framework/pending_editor_view.hpp"
#include "framework/resource_manager.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"
#include "platform/skins/skins.hpp"

#include <map>
#include <string>

namespace qoraudiofiltersui {

namespace {

using qoraudiofilterhostui::AudioFilterViewFactory;
using qoraudiofilterhostui::AudioFilterViewFactoryRegistrar;
using qorcore::Guid;

// Fourteen effects use the generic factory directly (the first 14 rows), 22 a factory of their
// own, LatencyGenerator among them.
constexpr EffectEntry kEffects[] = {
    {"AdaptiveNoiseReduction",
     Guid(0xF83AD984, 0x04C6, 0x4474, 0xB8, 0xC0, 0xE3, 0x1D, 0x98, 0x87, 0x5C, 0xFE),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "AdaptiveNoiseReduction",
     "ADAPTIVENOISEREDUCTION.mrl ADAPTIVENOISEREDUCTION.tss"},
    {"AnalogDelay",
     Guid(0xC4AD21D8, 0x9748, 0x4D79, 0xB4, 0xA3, 0xD8, 0x8A, 0xB7, 0xE4, 0xBE, 0x34),
     EditorKind::kLayoutOnly, "MarlTessAudioFilterEditorView", "AnalogDelay", "ANALOGDELAY.tss"},
    {"AutoClickRemover",
     Guid(0x433322B0, 0xD25A, 0x4CFA, 0xA4, 0xF1, 0x4A, 0x1A, 0xB2, 0xD7, 0x61, 0x5B),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "AutoClickRemover",
     "AUTOCLICKREMOVER.mrl AUTOCLICKREMOVER.tss"},
    {"ChannelMixerUI",
     Guid(0xC5CA9E29, 0xDF07, 0x42A6, 0x88, 0x00, 0xBA, 0x80, 0x32, 0x4E, 0x5C, 0xBC),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "ChannelMixerUI",
     "CHANNELMIXERUI.mrl CHANNELMIXERUI.tss"},
    {"Flanger", Guid(0xD30B6731, 0x3E00, 0x4A11, 0x96, 0x50, 0xE8, 0x16, 0xF5, 0x8A, 0x9D, 0x12),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "Flanger", "FLANGER.mrl FLANGER.tss"},
    {"GraphicEQ10Bands",
     Guid(0x3792D46F, 0x5036, 0x4BE6, 0xAB, 0x5A, 0x17, 0x76, 0x22, 0x24, 0x6A, 0x5D),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "GraphicEQ10Bands",
     "GRAPHICEQ10BANDS.mrl GRAPHICEQ10BANDS.tss"},
    {"GraphicEQ20Bands",
     Guid(0x0E133EF5, 0x2371, 0x48DB, 0x9B, 0x72, 0xB4, 0xC4, 0x41, 0x46, 0x03, 0x91),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "GraphicEQ20Bands",
     "GRAPHICEQ20BANDS.mrl GRAPHICEQ20BANDS.tss"},
    {"GraphicEQ30Bands",
     Guid(0xC6BA8ED5, 0xE0D5, 0x4ED9, 0xA2, 0x09, 0x08, 0xAD, 0xEC, 0x9B, 0x18, 0xA9),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "GraphicEQ30Bands",
     "GRAPHICEQ30BANDS.mrl GRAPHICEQ30BANDS.tss"},
    {"HardLimiter",
     Guid(0xE0B23F05, 0xF1A7, 0x4EF7, 0x9B, 0x50, 0x7E, 0xC3, 0xE3, 0x00, 0x20, 0x58),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "HardLimiter",
     "HARDLIMITER.mrl HARDLIMITER.tss"},
    {"ChorusFlanger",
     Guid(0x1FFC7DD8, 0xDF1B, 0x475B, 0xBF, 0xF6, 0xF5, 0x24, 0x0A, 0xA6, 0xA0, 0x97),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "ChorusFlanger",
     "CHORUSFLANGER.mrl CHORUSFLANGER.tss"},
    {"GuitarSuite",
     Guid(0xC23A8ACB, 0xAFFC, 0x4FF4, 0x9C, 0xA6, 0x2B, 0x56, 0x0B, 0x34, 0x0A, 0x56),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "GuitarSuite",
     "GUITARSUITE.mrl GUITARSUITE.tss"},
    {"Phaser", Guid(0xD7CA44F4, 0x7AC1, 0x4243, 0xA7, 0x9E, 0x59, 0xE2, 0x83, 0xB7, 0x1C, 0xCA),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "Phaser", "PHASER.mrl PHASER.tss"},
    {"SingleBandCompressor",
     Guid(0x2DA3E2BC, 0x5005, 0x481C, 0xBB, 0xEB, 0x76, 0x89, 0xD3, 0x16, 0x9E, 0xDF),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "SingleBandCompressor",
     "SINGLEBANDCOMPRESSOR.mrl SINGLEBANDCOMPRESSOR.tss"},
    {"StudioReverb",
     Guid(0x7EA99D31, 0xCA8F, 0x454F, 0xAC, 0xD7, 0x81, 0xA2, 0x58, 0xEF, 0xB3, 0x36),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "StudioReverb",
     "STUDIOREVERB.mrl STUDIOREVERB.tss"},
    {"LatencyGenerator",
     Guid(0x2785E536, 0x6EF0, 0x4667, 0xBF, 0xBB, 0xBE, 0xE7, 0x5F, 0x5B, 0x08, 0x86),
     EditorKind::kGeneric, "MarlTessAudioFilterEditorView", "LatencyGenerator",
     "LATENCYGENERATOR.mrl LATENCYGENERATOR.tss"},
    {"Amplify", Guid(0xF14FEE7D, 0xFE5F, 0x4202, 0xB7, 0x90, 0xF5, 0x32, 0x09, 0xE5, 0x64, 0x11),
     EditorKind::kArchiveView, "AmplifyEditorView", "Amplify", "AMPLIFY.xml"},
    {"FFTFilter", Guid(0x4F327230, 0xF04C, 0x4C34, 0x9E, 0xA5, 0xA9, 0x98, 0xB4, 0x45, 0x92, 0x21),
     EditorKind::kArchiveView, "FFTFilterEditorView", "FFTFilter",
     "FFTFILTER.xml FFTFILTER.V7.xml"},
    {"NotchFilter",
     Guid(0xEE38CDC5, 0x5914, 0x4A75, 0xB7, 0xDD, 0x73, 0xA2, 0x65, 0xE5, 0x5C, 0x31),
     EditorKind::kArchiveView, "NotchFilterEditorView", "NotchFilter",
     "NOTCHFILTER.xml NOTCHFILTER.V7.xml"},
    {"PitchShift", Guid(0x164B4E8A, 0x7105, 0x406B, 0xB2, 0x3B, 0x1E, 0xF2, 0xCC, 0x4D, 0x89, 0x57),
     EditorKind::kArchiveView, "PitchShiftEditorView", "PitchShift",
     "PITCHSHIFT.xml PITCHSHIFT.V7.xml"},
    {"ScientificFilter",
     Guid(0x4D0A6193, 0x2769, 0x4497, 0xA2, 0x8E, 0x30, 0xE4, 0x2D, 0x1B, 0xC3, 0x76),
     EditorKind::kArchiveView, "ScientificFilterEditorView", "ScientificFilter",
     "SCIENTIFICFILTER.xml SCIENTIFICFILTER.V7.xml"},
    {"StereoExpander",
     Guid(0xFE767733, 0x0969, 0x46CF, 0xBF, 0x45, 0xFB, 0xF3, 0xD5, 0x8E, 0xC4, 0x6A),
     EditorKind::kArchiveView, "StereoExpanderEditorView", "StereoExpander", "STEREOEXPANDER.xml"},
    {"ConvolutionReverb",
     Guid(0x99C2E75F, 0x0BDB, 0x48D8, 0x8B, 0x51, 0x2B, 0xAC, 0x2E, 0x26, 0xB2, 0xCF),
     EditorKind::kSheetView, "ImpulseResponseEditorView", "ConvolutionReverb",
     "CONVOLUTIONREVERB.mrl CONVOLUTIONREVERB.tss"},
    {"DeEsser", Guid(0xFFBE710F, 0xCD69, 0x4139, 0xAD, 0x26, 0x65, 0x60, 0x36, 0x16, 0xD9, 0xD4),
     EditorKind::kSheetView, "DeEsserEditorView", "DeEsser", "DEESSER.mrl DEESSER.tss"},
    {"DeHummer", Guid(0x25F78ADC, 0x442B, 0x4221, 0x8A, 0x59, 0xD1, 0x9D, 0x3B, 0xF1, 0x46, 0x87),
     EditorKind::kSheetView, "DeHummerEditorView", "DeHummer", "DEHUMMER.mrl DEHUMMER.tss"},
    {"Distortion", Guid(0x9B66AB13, 0x4D1B, 0x469A, 0x88, 0xC6, 0xB8, 0x07, 0xFC, 0xF1, 0xDF, 0x16),
     EditorKind::kSheetView, "DistortionEditorView", "Distortion", "DISTORTION.mrl DISTORTION.tss"},
    {"Dynamics", Guid(0xF76DAD9C, 0x77DA, 0x477A, 0x99, 0x39, 0xEE, 0xFE, 0xFC, 0x5C, 0x23, 0xBD),
     EditorKind::kSheetView, "DynamicsEditorView", "Dynamics", "DYNAMICS.mrl DYNAMICS.tss"},
    {"LoudnessMeter",
     Guid(0x43F746B7, 0xB34E, 0x402B, 0x8F, 0xB4, 0x47, 0x9C, 0xF3, 0x46, 0x62, 0x64),
     EditorKind::kSheetView, "LoudnessMeterEditorView", "LoudnessMeter",
     "LOUDNESSMETER.mrl LOUDNESSMETER.tss LOUDNESSMETERPROXY.tss"},
    {"Mastering", Guid(0x094E8ED0, 0x1FCC, 0x4BEC, 0xAC, 0x4A, 0xB3, 0x58, 0xC4, 0xCE, 0x1F, 0x27),
     EditorKind::kSheetView, "MasteringEditorView", "Mastering", "MASTERING.mrl MASTERING.tss"},
    {"MultiBandCompressor",
     Guid(0x3981E750, 0xC8AE, 0x40A2, 0x88, 0x9F, 0x41, 0xA0, 0x1C, 0x7E, 0xFA, 0x03),
     EditorKind::kSheetView, "MultiBandCompressorEditorView", "MultiBandCompressor",
     "MULTIBANDCOMPRESSOR.mrl MULTIBANDCOMPRESSOR.tss COMPRESSORBAND.tss"},
    {"ParametricDynamics",
     Guid(0x1EEE85A7, 0x3087, 0x439E, 0x90, 0x6D, 0xDC, 0x62, 0x04, 0x33, 0x0E, 0x25),
     EditorKind::kSheetView, "ParametricDynamicsEditorView", "ParametricDynamics",
     "PARAMETRICDYNAMICS.mrl PARAMETRICDYNAMICS.tss"},
    {"ParametricEQ",
     Guid(0x8EDCD326, 0x33DE, 0x4A4D, 0x98, 0x5B, 0xF1, 0xBF, 0x48, 0xED, 0x14, 0x27),
     EditorKind::kSheetView, "ParametricEQEditorView", "ParametricEQ",
     "PARAMETRICEQ.mrl PARAMETRICEQ.tss PARAMETRICEQ.V7.tss"},
    {"SingleBandDynamics",
     Guid(0x114CB079, 0xF1B9, 0x44E5, 0xA8, 0xBF, 0xC3, 0x8A, 0xCB, 0x04, 0x95, 0x8F),
     EditorKind::kSheetView, "SingleBandDynamicsEditorView", "SingleBandDynamics",
     "SINGLEBANDDYNAMICS.mrl SINGLEBANDDYNAMICS.tss"},
    {"SpectrumMeter",
     Guid(0xA249D9E9, 0x1DD5, 0x4E3B, 0xB5, 0x81, 0x31, 0x48, 0x29, 0x51, 0xC6, 0x08),
     EditorKind::kSheetView, "SpectrumMeterEditorView", "SpectrumMeter",
     "SPECTRUMMETER.mrl SPECTRUMMETER.tss"},
    {"SurroundReverb",
     Guid(0x6E496BA0, 0x3DBC, 0x4C41, 0xA2, 0x72, 0x70, 0x71, 0xDA, 0xFF, 0x0D, 0x95),
     EditorKind::kSheetView, "SurroundReverbEditorView", "SurroundReverb",
     "SURROUNDREVERB.mrl SURROUNDREVERB.tss"},
    {"TubeModeledComp",
     Guid(0xF527FD12, 0x24BF, 0x411F, 0xA4, 0x6E, 0x5B, 0x99, 0x7C, 0xEC, 0x32, 0xD4),
     EditorKind::kSheetView, "TubeModeledCompEditorView", "TubeModeledCompressor",
     "TUBEMODELEDCOMPRESSOR.mrl TUBEMODELEDCOMPRESSOR.tss"},
    {"VocalEnhancer",
     Guid(0x82882ADC, 0x18CB, 0x475B, 0xB2, 0x37, 0x59, 0x75, 0x76, 0xA5, 0xE7, 0x07),
     EditorKind::kSheetView, "VocalEnhancerEditorView", "VocalEnhancer",
     "VOCALENHANCER.mrl VOCALENHANCER.tss"},

};

static_assert(std::size(kEffects) == 36);

/// What every factory reads first: the library's objects, which exist only after Initialize.
void RequireLibrary() {
    if (!GetLibraryResourceManager())
        qorcore::config::DoThrowNullPtrException("ResourceManager");
    if (!GetLibraryDrawSupplier())
        qorcore::config::DoThrowNullPtrException("SupplierInterface");
}

std::map<std::string, EditorClassFactory, std::less<>>& EditorClasses() {
    static std::map<std::string, EditorClassFactory, std::less<>> classes;
    return classes;
}

const EditorClassFactory* FindEditorClass(const EffectEntry& effect) {
    const auto& classes = EditorClasses();
    const auto found = classes.find(std::string_view(effect.name));
    return found == classes.end() ? nullptr : &found->second;
}

// Effects whose own view class is not built yet answer with an empty editor that keeps what the
// real one would load.
qorcore::IntrusivePtr<AudioFilterEditorViewBase>
MakePendingEditor(const EffectEntry& effect, bool scripts, std::shared_ptr<AudioFilter> filter) {
    RequireLibrary();
    EditorResources resources;
    if (scripts)
        resources = ChooseEditorResources(GetLibraryResourceManager(), effect.resourceName, true,
                                          qorui::skins::IsRunningV7OrBeyond());
    qorcore::IntrusivePtr<AudioFilterEditorViewBase> view(
        new PendingEditorView(std::move(filter), effect, std::move(resources)));
    if (!scripts)
        view->Init();
    return view;
}

// Kinds S and X: the effect's own class, entered by its source file.
qorcore::IntrusivePtr<AudioFilterEditorViewBase>
CreateOwnClassEditor(const EffectEntry& effect, std::shared_ptr<AudioFilter> filter) {
    if (const EditorClassFactory* factory = FindEditorClass(effect)) {
        RequireLibrary();
        return (*factory)(std::move(filter));
    }
    return MakePendingEditor(effect, effect.kind == EditorKind::kSheetView, std::move(filter));
}

// LatencyGenerator has a factory of its own that makes the same call as the generic one.
qorcore::IntrusivePtr<AudioFilterEditorViewBase>
CreateLatencyGeneratorEditor(std::shared_ptr<AudioFilter> filter) {
    return CreateSheetEditor("LatencyGenerator", true, std::move(filter));
}

AudioFilterViewFactory MakeFactory(const EffectEntry& effect) {
    if (std::string_view(effect.name) == "LatencyGenerator")
        return &CreateLatencyGeneratorEditor;
    switch (effect.kind) {
    case EditorKind::kGeneric:
        return [name = effect.resourceName](std::shared_ptr<AudioFilter> filter) {
            return CreateSheetEditor(name, true, std::move(filter));
        };
    case EditorKind::kLayoutOnly:
        return [name = effect.resourceName](std::shared_ptr<AudioFilter> filter) {
            return CreateSheetEditor(name, false, std::move(filter));
        };
    case EditorKind::kSheetView:
        return [&effect](std::shared_ptr<AudioFilter> filter) {
            return CreateOwnClassEditor(effect, std::move(filter));
        };
    case EditorKind::kArchiveView:
        return [&effect](std::shared_ptr<AudioFilter> filter) {
            return CreateOwnClassEditor(effect, std::move(filter));
        };
    }
    return nullptr;
}

AudioFilterViewFactoryRegistrar Registration(std::size_t index) {
    return AudioFilterViewFactoryRegistrar(kEffects[index].GetGuidText(),
                                           MakeFactory(kEffects[index]));
}

// One registrar per effect, entered when the program loads.
const AudioFilterViewFactoryRegistrar registerAdaptiveNoiseReduction = Registration(0);
const AudioFilterViewFactoryRegistrar registerAnalogDelay = Registration(1);
const AudioFilterViewFactoryRegistrar registerAutoClickRemover = Registration(2);
const AudioFilterViewFactoryRegistrar registerChannelMixerUI = Registration(3);
const AudioFilterViewFactoryRegistrar registerFlanger = Registration(4);
const AudioFilterViewFactoryRegistrar registerGraphicEQ10Bands = Registration(5);
const AudioFilterViewFactoryRegistrar registerGraphicEQ20Bands = Registration(6);
const AudioFilterViewFactoryRegistrar registerGraphicEQ30Bands = Registration(7);
const AudioFilterViewFactoryRegistrar registerHardLimiter = Registration(8);
const AudioFilterViewFactoryRegistrar registerChorusFlanger = Registration(9);
const AudioFilterViewFactoryRegistrar registerGuitarSuite = Registration(10);
const AudioFilterViewFactoryRegistrar registerPhaser = Registration(11);
const AudioFilterViewFactoryRegistrar registerSingleBandCompressor = Registration(12);
const AudioFilterViewFactoryRegistrar registerStudioReverb = Registration(13);
const AudioFilterViewFactoryRegistrar registerLatencyGenerator = Registration(14);
const AudioFilterViewFactoryRegistrar registerAmplify = Registration(15);
const AudioFilterViewFactoryRegistrar registerFFTFilter = Registration(16);
const AudioFilterViewFactoryRegistrar registerNotchFilter = Registration(17);
const AudioFilterViewFactoryRegistrar registerPitchShift = Registration(18);
const AudioFilterViewFactoryRegistrar registerScientificFilter = Registration(19);
const AudioFilterViewFactoryRegistrar registerStereoExpander = Registration(20);
const AudioFilterViewFactoryRegistrar registerConvolutionReverb = Registration(21);
const AudioFilterViewFactoryRegistrar registerDeEsser = Registration(22);
const AudioFilterViewFactoryRegistrar registerDeHummer = Registration(23);
const AudioFilterViewFactoryRegistrar registerDistortion = Registration(24);
const AudioFilterViewFactoryRegistrar registerDynamics = Registration(25);
const AudioFilterViewFactoryRegistrar registerLoudnessMeter = Registration(26);
const AudioFilterViewFactoryRegistrar registerMastering = Registration(27);
const AudioFilterViewFactoryRegistrar registerMultiBandCompressor = Registration(28);
const AudioFilterViewFactoryRegistrar registerParametricDynamics = Registration(29);
const AudioFilterViewFactoryRegistrar registerParametricEQ = Registration(30);
const AudioFilterViewFactoryRegistrar registerSingleBandDynamics = Registration(31);
const AudioFilterViewFactoryRegistrar registerSpectrumMeter = Registration(32);
const AudioFilterViewFactoryRegistrar registerSurroundReverb = Registration(33);
const AudioFilterViewFactoryRegistrar registerTubeModeledComp = Registration(34);
const AudioFilterViewFactoryRegistrar registerVocalEnhancer = Registration(35);

} // namespace

std::span<const EffectEntry> GetEffectCatalogue() {
    return kEffects;
}

const EffectEntry* FindEffect(std::string_view nameOrGuid) {
    const auto guid = Guid::FromString(nameOrGuid);
    for (const EffectEntry& effect : kEffects)
        if ((guid && effect.classGuid == *guid) ||
            qorcore::EqualIgnoringCase(effect.name, nameOrGuid))
            return &effect;
    return nullptr;
}

qorcore::IntrusivePtr<AudioFilterEditorViewBase>
CreateSheetEditor(const char* resourceName, bool hasSheet, std::shared_ptr<AudioFilter> filter) {
    RequireLibrary();
    return MarlTessAudioFilterEditorView::Create(std::move(filter), GetLibraryDrawSupplier(),
                                                 resourceName ? resourceName : "",
                                                 GetLibraryResourceManager(), hasSheet);
}

bool IsEditorClassBuilt(const EffectEntry& effect) {
    if (effect.kind == EditorKind::kGeneric || effect.kind == EditorKind::kLayoutOnly)
        return true;
    return FindEditorClass(effect) != nullptr;
}

bool RegisterEditorClass(const char* effectName, EditorClassFactory factory) {
    if (!effectName || !*effectName || !factory)
        return false;
    return EditorClasses().emplace(effectName, std::move(factory)).second;
}

} // namespace qoraudiofiltersui
