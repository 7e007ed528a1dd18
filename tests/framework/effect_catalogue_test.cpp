#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "framework/pending_editor_view.hpp"
#include "framework/resource_manager.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"
#include "platform/skins/skins.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <unistd.h>

using namespace qoraudiofiltersui;
using qoraudiofilterhostui::AudioFilterViewFactoryRegistry;

namespace {

// The class GUIDs as the host knows them, written out independently of the catalogue.
const std::map<std::string, std::pair<std::string, char>> kExpected = {
    {"AdaptiveNoiseReduction", {"F83AD984-04C6-4474-B8C0-E31D98875CFE", 'G'}},
    {"AnalogDelay", {"C4AD21D8-9748-4D79-B4A3-D88AB7E4BE34", 'L'}},
    {"AutoClickRemover", {"433322B0-D25A-4CFA-A4F1-4A1AB2D7615B", 'G'}},
    {"ChannelMixerUI", {"C5CA9E29-DF07-42A6-8800-BA80324E5CBC", 'G'}},
    {"Flanger", {"D30B6731-3E00-4A11-9650-E816F58A9D12", 'G'}},
    {"GraphicEQ10Bands", {"3792D46F-5036-4BE6-AB5A-177622246A5D", 'G'}},
    {"GraphicEQ20Bands", {"0E133EF5-2371-48DB-9B72-B4C441460391", 'G'}},
    {"GraphicEQ30Bands", {"C6BA8ED5-E0D5-4ED9-A209-08ADEC9B18A9", 'G'}},
    {"HardLimiter", {"E0B23F05-F1A7-4EF7-9B50-7EC3E3002058", 'G'}},
    {"ChorusFlanger", {"1FFC7DD8-DF1B-475B-BFF6-F5240AA6A097", 'G'}},
    {"GuitarSuite", {"C23A8ACB-AFFC-4FF4-9CA6-2B560B340A56", 'G'}},
    {"Phaser", {"D7CA44F4-7AC1-4243-A79E-59E283B71CCA", 'G'}},
    {"SingleBandCompressor", {"2DA3E2BC-5005-481C-BBEB-7689D3169EDF", 'G'}},
    {"StudioReverb", {"7EA99D31-CA8F-454F-ACD7-81A258EFB336", 'G'}},
    {"LatencyGenerator", {"2785E536-6EF0-4667-BFBB-BEE75F5B0886", 'G'}},
    {"Amplify", {"F14FEE7D-FE5F-4202-B790-F53209E56411", 'X'}},
    {"FFTFilter", {"4F327230-F04C-4C34-9EA5-A998B4459221", 'X'}},
    {"NotchFilter", {"EE38CDC5-5914-4A75-B7DD-73A265E55C31", 'X'}},
    {"PitchShift", {"164B4E8A-7105-406B-B23B-1EF2CC4D8957", 'X'}},
    {"ScientificFilter", {"4D0A6193-2769-4497-A28E-30E42D1BC376", 'X'}},
    {"StereoExpander", {"FE767733-0969-46CF-BF45-FBF3D58EC46A", 'X'}},
    {"ConvolutionReverb", {"99C2E75F-0BDB-48D8-8B51-2BAC2E26B2CF", 'S'}},
    {"DeEsser", {"FFBE710F-CD69-4139-AD26-65603616D9D4", 'S'}},
    {"DeHummer", {"25F78ADC-442B-4221-8A59-D19D3BF14687", 'S'}},
    {"Distortion", {"9B66AB13-4D1B-469A-88C6-B807FCF1DF16", 'S'}},
    {"Dynamics", {"F76DAD9C-77DA-477A-9939-EEFEFC5C23BD", 'S'}},
    {"LoudnessMeter", {"43F746B7-B34E-402B-8FB4-479CF3466264", 'S'}},
    {"Mastering", {"094E8ED0-1FCC-4BEC-AC4A-B358C4CE1F27", 'S'}},
    {"MultiBandCompressor", {"3981E750-C8AE-40A2-889F-41A01C7EFA03", 'S'}},
    {"ParametricDynamics", {"1EEE85A7-3087-439E-906D-DC6204330E25", 'S'}},
    {"ParametricEQ", {"8EDCD326-33DE-4A4D-985B-F1BF48ED1427", 'S'}},
    {"SingleBandDynamics", {"114CB079-F1B9-44E5-A8BF-C38ACB04958F", 'S'}},
    {"SpectrumMeter", {"A249D9E9-1DD5-4E3B-B581-31482951C608", 'S'}},
    {"SurroundReverb", {"6E496BA0-3DBC-4C41-A272-7071DAFF0D95", 'S'}},
    {"TubeModeledComp", {"F527FD12-24BF-411F-A46E-5B997CEC32D4", 'S'}},
    {"VocalEnhancer", {"82882ADC-18CB-475B-B237-597576A5E707", 'S'}},
};

std::shared_ptr<qoraudiofilterhost::ParameterStoreFilter> MakeFilter() {
    return std::make_shared<qoraudiofilterhost::ParameterStoreFilter>(
        std::vector<qoraudiofilterhost::ParameterDescriptor>{{"p", 0.0f, 1.0f, 0.0f}});
}

/// An initialised library reading its resources from a folder of the test's own.
class InitializedLibrary : public ::testing::Test {
protected:
    void SetUp() override {
        folder = std::filesystem::temp_directory_path() /
                 ("qafui-catalogue-" + std::to_string(::getpid()));
        std::filesystem::create_directories(folder);
        ::setenv("QAFUI_RESOURCE_DIR", folder.c_str(), 1);
        Initialize(&supplier);
    }
    void TearDown() override {
        Terminate();
        ::unsetenv("QAFUI_RESOURCE_DIR");
        std::filesystem::remove_all(folder);
    }
    void Write(const std::string& file, const std::string& text) {
        std::ofstream(folder / file) << text;
    }
    /// The scripts the pending editor of `guid` chose, under `skin`.
    EditorResources Chosen(const char* guid, qorui::skins::Skin skin) {
        qorui::skins::ScopedSkin look(skin);
        auto view = AudioFilterViewFactoryRegistry::Get().CreateEditor(guid, MakeFilter());
        return dynamic_cast<const PendingEditorView&>(*view).GetResources();
    }

    qorui::penrig::CairoSupplier supplier;
    std::filesystem::path folder;
};

} // namespace

TEST(EffectCatalogue, HoldsThe36EffectsWithTheirGuidsAndKindsAndTheRegistryAnswersThem) {
    const auto catalogue = GetEffectCatalogue();
    ASSERT_EQ(catalogue.size(), 36u);
    std::map<char, int> kinds;
    const auto& registry = AudioFilterViewFactoryRegistry::Get();
    for (const EffectEntry& effect : catalogue) {
        auto expected = kExpected.find(effect.name);
        ASSERT_NE(expected, kExpected.end()) << effect.name;
        const std::string& guid = expected->second.first;
        EXPECT_EQ(effect.GetGuidText(), guid) << effect.name;
        EXPECT_EQ(char(effect.kind), expected->second.second) << effect.name;
        ++kinds[char(effect.kind)];
        std::string lower = guid;
        for (char& c : lower)
            c = char(std::tolower(static_cast<unsigned char>(c)));
        EXPECT_TRUE(registry.Contains(guid) && registry.Contains(lower)) << effect.name;
    }
    EXPECT_EQ(kinds, (std::map<char, int>{{'G', 14}, {'L', 1}, {'S', 15}, {'X', 6}}));
    EXPECT_EQ(FindEffect("tubemodeledcomp")->resourceName, std::string("TubeModeledCompressor"));
    EXPECT_EQ(FindEffect("99c2e75f-0bdb-48d8-8b51-2bac2e26b2cf")->resourceName,
              std::string("ConvolutionReverb"));
    EXPECT_EQ(FindEffect("NoSuchEffect"), nullptr);
}

TEST(EffectCatalogue, FactoriesBeforeInitializeFailWithTheNullPointerException) {
    ASSERT_EQ(GetLibraryUseCount(), 0u);
    for (const char* guid :
         {"F83AD984-04C6-4474-B8C0-E31D98875CFE", "F14FEE7D-FE5F-4202-B790-F53209E56411"})
        EXPECT_THROW(AudioFilterViewFactoryRegistry::Get().CreateEditor(guid, MakeFilter()),
                     qorcore::NullPointerException)
            << guid;
}

TEST_F(InitializedLibrary, EveryFactoryMakesAnEditorOnItsFilter) {
    for (const auto& [name, expected] : kExpected) {
        auto filter = MakeFilter();
        auto editor = AudioFilterViewFactoryRegistry::Get().CreateEditor(expected.first, filter);
        ASSERT_TRUE(editor) << name;
        EXPECT_EQ(editor->GetAudioFilter(), filter) << name;
        const EffectEntry& effect = *FindEffect(name);
        // No own class is linked into this test: only the generic kinds make script editors.
        const bool generic =
            effect.kind == EditorKind::kGeneric || effect.kind == EditorKind::kLayoutOnly;
        EXPECT_EQ(IsEditorClassBuilt(effect), generic) << name;
        if (generic) {
            // A script editor comes up with its layout when the library carries one, and
            // empty without.
            auto* script = dynamic_cast<MarlTessAudioFilterEditorView*>(editor.get());
            ASSERT_NE(script, nullptr) << name;
            const bool hasLayout =
                GetLibraryResourceManager()->HasBinary(effect.resourceName, "tss");
            EXPECT_EQ(bool(script->GetTessRoot()), hasLayout) << name;
            continue;
        }
        auto* pending = dynamic_cast<PendingEditorView*>(editor.get());
        ASSERT_NE(pending, nullptr) << name;
        EXPECT_EQ(pending->GetEffect().name, name);
        EXPECT_EQ(pending->GetInitCount(), expected.second == 'X' ? 1 : 0) << name;
    }
}

TEST_F(InitializedLibrary, ScriptEditorsChooseTheirResources) {
    Write("PARAMETRICEQ.mrl", "eq sheet");
    Write("PARAMETRICEQ.tss", "eq classic");
    Write("PARAMETRICEQ.V7.tss", "eq v7");
    Write("ANALOGDELAY.mrl", "never read: this is no sheet");
    Write("ANALOGDELAY.tss", "layout AnalogDelayUI { view subview() { checkbox(identifier: "
                             "\"Sync\", name: \"Sync\"); } }");
    Write("TUBEMODELEDCOMPRESSOR.tss", "tube layout");
    using qorui::skins::Skin;
    const EditorResources eq = Chosen("8EDCD326-33DE-4A4D-985B-F1BF48ED1427", Skin::kV7);
    EXPECT_EQ(eq.layoutText, "eq v7");
    EXPECT_EQ(eq.sheetText, "eq sheet");
    EXPECT_EQ(Chosen("8EDCD326-33DE-4A4D-985B-F1BF48ED1427", Skin::kClassic).layoutText,
              "eq classic");
    EXPECT_EQ(Chosen("F527FD12-24BF-411F-A46E-5B997CEC32D4", Skin::kClassic).layoutText,
              "tube layout")
        << "a class may load a resource whose name differs from the effect's";

    // AnalogDelay never looks for a sheet: the broken one beside its layout is not read.
    auto delay = AudioFilterViewFactoryRegistry::Get().CreateEditor(
        "C4AD21D8-9748-4D79-B4A3-D88AB7E4BE34", MakeFilter());
    auto* script = dynamic_cast<MarlTessAudioFilterEditorView*>(delay.get());
    ASSERT_NE(script, nullptr);
    ASSERT_TRUE(script->GetTessRoot());
    EXPECT_TRUE(script->GetTessRoot()->GetTessViewHolder().GetControl("Sync"));
    EXPECT_GT(script->GetFrame().width, 0.0f);

    auto noiseReduction = AudioFilterViewFactoryRegistry::Get().CreateEditor(
        "F83AD984-04C6-4474-B8C0-E31D98875CFE", MakeFilter());
    EXPECT_FALSE(dynamic_cast<MarlTessAudioFilterEditorView&>(*noiseReduction).GetTessRoot())
        << "an unknown resource leaves the editor without content";
}
