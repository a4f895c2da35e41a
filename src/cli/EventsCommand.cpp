#include "Batch.h"
#include "Console.h"

#include "EventText.h"
#include "TambrelLoadError.h"
#include "TambrelMIDIFileSupport.h"

#include <system_error>

namespace tambrel::cli {
namespace {

using std::filesystem::path;

template<class Make>
Report report(const path& input, Make make) {
    try {
        return make(readInput(input));
    } catch (const TambrelLoadCancelled&) {
        return {.output = {}, .errors = {}, .failed = true};
    } catch (const std::exception& error) {
        return {.output = {},
                .errors = complaint(input, TambrelLoadError::diagnosticReason(error)),
                .failed = true};
    }
}

Report written(const OutputPlan& plan, std::size_t job, ByteView bytes) {
    const auto failure = [&](const std::string& reason) -> Report {
        return {.output = {}, .errors = complaint(plan.output(job), reason), .failed = true};
    };
    if (const std::string refusal = plan.refusal(job); !refusal.empty())
        return failure(refusal);
    // What goes to standard output is printed with the report, in order.
    if (plan.output(job) == standardStream)
        return {.output = std::string(bytes.begin(), bytes.end()), .errors = {}};
    try {
        writeOutput(plan.output(job), bytes, plan.replaces());
        return {};
    } catch (const std::system_error& error) {
        return failure(error.code().message());
    }
}

ByteView bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// "song.mid" is written as "song.mid.txt", which becomes "song.mid" again.
path textName(const path& input, path output) {
    return output += input.extension().native() + ".txt";
}

path songName(const path& /*input*/, path output) {
    if (!TambrelMIDIFileSupport::hasExtension(output.native(), TambrelMIDIFileSupport::loadableExtensions()))
        output += ".mid";
    return output;
}

} // namespace

ExitStatus runDump(const EventsOptions& options) {
    const auto files = inputs(options.input);
    if (options.output.output.empty() || options.output.output == standardStream)
        return runBatch(files.size(), options.batch, [&](std::size_t job) {
            return report(files[job], [](ByteView data) -> Report {
                return {.output = EventText::dump(data), .errors = {}};
            });
        });
    const OutputPlan plan(files, options.output, textName);
    return runBatch(plan.size(), options.batch, [&](std::size_t job) {
        return report(plan.input(job),
                      [&](ByteView data) { return written(plan, job, bytesOf(EventText::dump(data))); });
    });
}

ExitStatus runBuild(const EventsOptions& options) {
    const OutputPlan plan(inputs(options.input), options.output, songName);
    return runBatch(plan.size(), options.batch, [&](std::size_t job) {
        return report(plan.input(job), [&](ByteView text) {
            return written(plan, job,
                           EventText::build({reinterpret_cast<const char*>(text.data()), text.size()}));
        });
    });
}

} // namespace tambrel::cli
