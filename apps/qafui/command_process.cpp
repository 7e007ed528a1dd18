// qafui process EFFECT --output FILE [--input FILE | --seconds S] [--block N] [--param I=V]...:
// runs a reference effect offline over an audio file or the test signal and writes the result,
// lined up with the input.

#include "command.hpp"
#include "editor_options.hpp"
#include "live_editor.hpp"
#include "parameter_options.hpp"

#include "audio/host/offline_processor.hpp"
#include "audio/host/reference_effects.hpp"
#include "audio/host/sound_file_reader.hpp"
#include "audio/host/sound_file_writer.hpp"
#include "audio/host/test_signal_source.hpp"
#include "framework/effect_catalogue.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <exception>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui process EFFECT --output FILE [--input FILE | --seconds S] [--block N]\n"
    "                     [--param I=V]... [--value I=X]...\n"
    "\n"
    "Runs the reference effect EFFECT (a name or class GUID of `qafui list`) offline over\n"
    "an audio file, or over S seconds of the test signal, and writes what comes out. A\n"
    "file is processed at its own rate and channel count (1 to 8) and written in its own\n"
    "format; the test signal is 48 kHz stereo, written as 32-bit float WAV. The effect's\n"
    "latency is taken out, so the output lines up with the input and is as long.\n"
    "\n"
    "options:\n"
    "  --output FILE  the file to write; it appears only once it is complete\n"
    "  --input FILE   an audio file of any format libsndfile reads\n"
    "  --seconds S    seconds of the test signal, up to 3600 (10 without --input)\n"
    "  --block N      frames the effect is given at a time, 1 to 65536 (default 512)\n"
    "  --param I=V    sets parameter I (an index or a name) to the normalised value V\n"
    "                 (0 to 1) before processing; may be repeated\n"
    "  --value I=X    the same with X in the parameter's own unit\n"
    "\n"
    "exit status: 0 written, 1 failed (nothing written), 2 wrong usage\n";

constexpr double kDefaultSeconds = 10.0;
constexpr float kTestSignalRate = 48000.0f;
constexpr std::size_t kTestSignalChannels = 2;

// Where the samples come from: a file, or a length of the test signal.
class input_t {
public:
    explicit input_t(const std::string& path)
        : file_(std::make_unique<qafhost::SoundFileReader>(path)) {}
    explicit input_t(double seconds)
        : signal_(std::make_unique<qafhost::TestSignalSource>(
              qafhost::TestSignalSource::Kind::kMix, kTestSignalRate, kTestSignalChannels)),
          left_(std::uint64_t(std::llround(seconds * double(kTestSignalRate)))),
          planar_(kTestSignalChannels) {}

    float sample_rate() const { return file_ ? file_->GetSampleRate() : kTestSignalRate; }
    std::size_t channel_count() const {
        return file_ ? file_->GetChannelCount() : kTestSignalChannels;
    }
    int format() const { return file_ ? file_->GetFormat() : qafhost::SoundFileWriter::kFloatWav; }

    std::size_t read(float* interleaved, std::size_t frame_count) {
        if (file_)
            return file_->Read(interleaved, frame_count);
        const std::size_t count = std::size_t(std::min<std::uint64_t>(frame_count, left_));
        std::vector<float*> pointers;
        for (std::vector<float>& channel : planar_) {
            channel.resize(std::max(channel.size(), count));
            pointers.push_back(channel.data());
        }
        signal_->Read(pointers.data(), pointers.size(), count);
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t c = 0; c < planar_.size(); ++c)
                interleaved[i * planar_.size() + c] = planar_[c][i];
        left_ -= count;
        return count;
    }

private:
    std::unique_ptr<qafhost::SoundFileReader> file_;
    std::unique_ptr<qafhost::TestSignalSource> signal_;
    std::uint64_t left_ = 0;
    std::vector<std::vector<float>> planar_;
};

int run(const command_t& command, const std::vector<std::string>& arguments) {
    editor_options_t options;
    const editor_option_rules_t rules{.output = "file",
                                      .output_option = "--output",
                                      .skin = false,
                                      .max_seconds = 3600.0,
                                      .zero_seconds = false,
                                      .scale = false,
                                      .block = true};
    if (const std::string error = read_editor_options(arguments, rules, options); !error.empty())
        return usage_error(command, error);
    if (options.effect.empty())
        return usage_error(command, "no EFFECT given");
    if (options.output.empty())
        return usage_error(command, "no output file given (--output FILE)");
    if (!options.input.empty() && options.seconds > 0.0)
        return usage_error(command, "--input and --seconds exclude each other: a file runs for "
                                    "its own length");
    const qoraudiofiltersui::EffectEntry* effect = find_effect_or_report("process", options.effect);
    if (!effect)
        return 1;
    const std::string name = effect->name;
    if (!qafhost::HasReferenceEffect(name)) {
        std::cerr << "qafui process: " << name
                  << ": the reference host has no DSP for this effect\n";
        return 1;
    }

    try {
        input_t input = options.input.empty()
                            ? input_t(options.seconds > 0.0 ? options.seconds : kDefaultSeconds)
                            : input_t(options.input);
        const std::size_t channels = input.channel_count();
        if (channels > qafhost::OfflineProcessor::kMaxChannels)
            throw std::runtime_error("\"" + options.input + "\" has " + std::to_string(channels) +
                                     " channels; the reference effects take 1 to " +
                                     std::to_string(qafhost::OfflineProcessor::kMaxChannels));
        qafhost::OfflineProcessor processor(name, input.sample_rate(), channels, options.block);
        apply_parameters(options.parameters, *processor.GetEffect());
        qafhost::SoundFileWriter writer(options.output, input.format(), input.sample_rate(),
                                        channels);
        const auto started = std::chrono::steady_clock::now();
        const std::uint64_t frames =
            processor.Run([&](float* to, std::size_t count) { return input.read(to, count); },
                          [&](const float* from, std::size_t count) { writer.Write(from, count); });
        writer.Commit();
        const double took =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
        const double seconds = double(frames) / double(input.sample_rate());
        std::cout << "wrote " << options.output << ": " << frames << " frames, " << channels
                  << (channels == 1 ? " channel" : " channels") << " at "
                  << std::lround(input.sample_rate()) << " Hz (" << std::fixed
                  << std::setprecision(2) << seconds << " s of audio in " << std::setprecision(3)
                  << took << " s)\n";
    } catch (const std::exception& error) {
        std::cerr << "qafui process: " << name << ": " << error.what() << "\n";
        return 1;
    }
    return 0;
}

const command_registration_t registration(command_t{
    "process", "run a reference effect offline over a file or the test signal", usage_text, &run});

} // namespace

} // namespace qafui::cli
