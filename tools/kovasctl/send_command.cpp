// SPDX-License-Identifier: MIT
#include <memory>

#include "tools/kovasctl/byte_source.h"
#include "tools/kovasctl/byte_text.h"
#include "tools/kovasctl/command.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/library.h"
#include "tools/kovasctl/open_port.h"
#include "tools/kovasctl/option_types.h"
#include "tools/kovasctl/progress_bar.h"
#include "tools/kovasctl/sending.h"
#include "tools/kovasctl/streams.h"

namespace {

struct SendOptions {
    std::string port;
    std::optional<std::string> text;
    std::optional<std::string> file;
    std::optional<std::string> hex;
    std::string lineEnd;
    bool hasEscapes = false;
    std::string line;
    std::optional<double> timeout;
};

ByteSource TextSource(const SendOptions& options) {
    const std::string text = options.hasEscapes ? FromEscapes(*options.text) : *options.text;
    return ByteSource::OfText(text + LineEnd(options.lineEnd));
}

ByteSource SourceOf(const SendOptions& options) {
    const bool isInput = options.text == "-";
    if (int{options.text.has_value()} + int{options.file.has_value()} +
            int{options.hex.has_value()} !=
        1) {
        throw WrongUse("send what? one of TEXT, '-' for standard input, --file and --hex");
    }
    if ((!options.text || isInput) && (options.hasEscapes || !options.lineEnd.empty())) {
        throw WrongUse("--escapes and --eol are for a TEXT");
    }
    if (options.file) {
        return ByteSource::OfFile(*options.file);
    }
    if (options.hex) {
        return ByteSource::OfText(FromHex(*options.hex));
    }
    return isInput ? ByteSource::OfStandardInput() : TextSource(options);
}

void SendSource(OpenPort& port, ByteSource& source, const SendOptions& options) {
    uint64_t done = 0;
    ProgressBar bar(options.file ? source.Size().value_or(0) : 0);
    const auto onSent = [&](size_t count) { bar.Show(done += count); };
    try {
        for (std::string bytes = source.Next(); !bytes.empty(); bytes = source.Next()) {
            SendAll(port, bytes, options.timeout.value_or(kSendPatienceInSeconds), onSent);
        }
    } catch (const Failure& failure) {
        const std::string total = source.Size() ? " of " + std::to_string(*source.Size()) : "";
        throw Failure(std::string(failure.what()) + "\n  sent: " + std::to_string(done) + total +
                      " bytes");
    }
}

int Send(const GlobalOptions& global, const SendOptions& options) {
    ByteSource source = SourceOf(options);
    Library library(global);
    OpenPort port(library, ChoosePort(TakeSnapshot(), options.port), options.line);
    SendSource(port, source, options);
    return kDone;
}

} // namespace

Action SetUpSend(CLI::App& app) {
    const auto options = std::make_shared<SendOptions>();
    AddPort(app, options->port);
    app.add_option("TEXT", options->text, "what to send; '-': standard input")->type_name("");
    app.add_option("--file", options->file, "send a file")->type_name("F");
    app.add_option("--hex", options->hex, "send bytes: '41 54 0d'")->type_name("BYTES");
    AddTextOptions(app, options->hasEscapes, options->lineEnd);
    AddSeconds(app, "--timeout", options->timeout,
               "give up when nothing is taken for so long; default: 10");
    AddLine(app, options->line);
    return [=](const GlobalOptions& global) { return Send(global, *options); };
}
