#include "Outputs.h"

#include "Console.h"
#include "NewFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tambrel::cli {
namespace {

using std::filesystem::path;

bool isFolder(const path& place) {
    std::error_code ignored;
    return !place.has_filename() || std::filesystem::is_directory(place, ignored);
}

bool isSameFile(const path& one, const path& other) {
    std::error_code ignored;
    return std::filesystem::equivalent(one, other, ignored);
}

} // namespace

OutputPlan::OutputPlan(std::vector<path> inputs, OutputOptions options, const Naming& naming)
    : inputs_(std::move(inputs)), options_(std::move(options)) {
    const path wanted = options_.output;
    const bool intoFolder = !wanted.empty() && wanted != standardStream && isFolder(wanted);
    if (inputs_.size() > 1 && !wanted.empty() && !intoFolder)
        throw UsageError("-o " + printable(options_.output) +
                         ": With more than one input, it has to be a folder that exists.");
    for (const path& input : inputs_) {
        const bool isStandardInput = input == standardStream;
        if (!wanted.empty() && !intoFolder) {
            outputs_.push_back(wanted);
        } else if (isStandardInput && !intoFolder) {
            outputs_.emplace_back(standardStream);
        } else {
            const path named = isStandardInput ? "standard-input" : input;
            const path stem = named.parent_path() / named.stem();
            outputs_.push_back(naming(input, intoFolder ? wanted / named.stem() : stem));
        }
    }
}

std::string OutputPlan::refusal(const path& output) const {
    std::error_code ignored;
    if (isStreamOutput(output) || !std::filesystem::exists(output, ignored))
        return {};
    if (std::ranges::any_of(inputs_, [&](const path& input) { return isSameFile(input, output); }))
        return "It is one of the inputs, which are never overwritten.";
    return options_.replace ? "" : "The file exists; --force overwrites it.";
}

std::string OutputPlan::refusal(std::size_t job) const {
    const auto end = outputs_.begin() + static_cast<std::ptrdiff_t>(job);
    if (outputs_[job] != standardStream && std::find(outputs_.begin(), end, outputs_[job]) != end)
        return "Another input is written to a file of this name.";
    return refusal(outputs_[job]);
}

void takeOutputOperand(std::vector<path>& operands, OutputOptions& options,
                       const std::function<bool(const path&)>& isOutput) {
    std::error_code ignored;
    if (operands.size() != 2 || !options.output.empty())
        return;
    const path& last = operands.back();
    if (last != standardStream && !isOutput(last) && std::filesystem::exists(last, ignored))
        return;
    options.output = last;
    operands.pop_back();
}

bool isStreamOutput(const path& output) {
    struct stat status {};
    return output == standardStream ||
           (stat(output.c_str(), &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)));
}

StreamOutput::StreamOutput(const path& output)
    : descriptor_(output == standardStream ? dup(STDOUT_FILENO)
                                           : open(output.c_str(), O_WRONLY | O_CLOEXEC)) {
    if (descriptor_ < 0)
        throw std::system_error(errno, std::generic_category());
    if (isatty(descriptor_) == 1) {
        close(descriptor_);
        throw std::runtime_error("This is not for a terminal; -o names a file.");
    }
}

StreamOutput::~StreamOutput() {
    close(descriptor_);
}

void writeOutput(const path& output, ByteView bytes, bool replace) {
    if (output == standardStream) {
        print({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        return;
    }
    NewFile file(output);
    file.write(bytes);
    file.keep(replace ? NewFile::Existing::replace : NewFile::Existing::keep);
}

} // namespace tambrel::cli
