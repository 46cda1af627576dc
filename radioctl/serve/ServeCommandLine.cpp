#include "radioctl/serve/ServeCommandLine.h"

#include "radio/board/PlatformWords.h"

namespace Radio::Serving {

ServeCommandLine::ServeCommandLine(CommandLine::Command program)
    : m_serve(program.command("serve", "Boot a board and serve it over HTTP")) {
    m_serve.option("BOARD", m_options.board, "Board description (TOML)").required().file({".toml"});
    m_serve.flag("--hardware", m_options.hardware,
                 "Drive the hardware that the board describes;\n"
                 "without it everything is simulated");
    m_serve
        .option("--listen", m_options.listen,
                "Where clients come; 127.0.0.1:8080. A port\n"
                "of 0 is any that is free. Beyond the\n"
                "loopback --token, --certificate and --key\n"
                "are needed")
        .named("ADDRESS:PORT");
    m_serve
        .option("--token", m_options.token,
                "Has a line of 16 characters or more, which\n"
                "clients have to know")
        .file();
    m_serve.option("--certificate", m_options.certificate, "Of the service, in PEM: clients come by TLS")
        .file({".pem", ".crt"});
    m_serve.option("--key", m_options.key, "The certificate's key, in PEM").file({".pem", ".key"});
    m_serve
        .option("--name", m_options.names,
                "A host by whose name clients come, besides\n"
                "the address")
        .named("HOST")
        .repeated();
    m_serve
        .option("--state", m_options.state,
                "Keeps the carriers, and has them come back\n"
                "after a restart")
        .file({".json"});
    m_serve.option("--trace", m_trace, "Trace messages to tell")
        .named("LEVEL")
        .oneOf({"off", "error", "warning", "notice", "information"})
        .showDefault();
    m_serve.json(m_options.json);
}

int ServeCommandLine::run(bool json) {
    m_options.json |= json;
    m_options.trace = *traceLevelFromString(m_trace);
    return serve(m_options);
}

} // namespace Radio::Serving
