#include "service/http/Server.h"

#include "radio/files/InputError.h"
#include "radio/text/Numbers.h"
#include "radio/text/Words.h"
#include "service/http/Gate.h"
#include "service/radio/Resources.h"

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>

namespace Radio::Service {

namespace {

namespace beast = boost::beast;
namespace http = beast::http;
namespace net = boost::asio;
using tcp = net::ip::tcp;
using std::chrono::seconds;

// What a client may take of the service.
constexpr std::uint32_t mostHeaderBytes = 8192;
constexpr std::uint64_t mostBodyBytes = 65536;
/** From the end of an answer, or from the connection, to the end of the next header. */
constexpr seconds headerTime(30);
constexpr seconds bodyTime(10);
constexpr seconds writeTime(10);
constexpr seconds handshakeTime(10);
/** How often those who follow events are told that the service is there when there are none. */
constexpr seconds beatInterval(10);
constexpr std::size_t mostPieceBytes = 65536;
/** What the kernel keeps for a client that does not read; it would take megabytes. */
constexpr int mostKeptBytes = 262144;
constexpr std::size_t mostConnections = 2000;
/** For files and devices beside the connections. */
constexpr std::size_t otherDescriptors = 100;

std::string addressText(const net::ip::address& address) {
    return address.is_v6() ? "[" + address.to_string() + "]" : address.to_string();
}

tcp::endpoint endpointOf(const std::string& listen) {
    const std::size_t colon = std::min(listen.rfind(':'), listen.size());
    std::string host = listen.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    beast::error_code error;
    const net::ip::address address = net::ip::make_address(host, error);
    const auto port = colon < listen.size()
                          ? parseNumber<unsigned short>(std::string_view(listen).substr(colon + 1))
                          : std::nullopt;
    if (error || !port) {
        throw InputError({"--listen", 0},
                         inQuotes(listen) +
                             " is no address, expected one such as 127.0.0.1:8080 or [::1]:8080");
    }
    return {address, *port};
}

/** Lets this process have as many connections as it may; gives how many. */
std::size_t raiseConnections() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return otherDescriptors;
    }
    const rlim_t wanted = mostConnections + otherDescriptors;
    if (limit.rlim_cur < wanted) {
        limit.rlim_cur = std::min(wanted, limit.rlim_max);
        static_cast<void>(setrlimit(RLIMIT_NOFILE, &limit));
        static_cast<void>(getrlimit(RLIMIT_NOFILE, &limit));
    }
    const auto most = static_cast<std::size_t>(std::min<rlim_t>(limit.rlim_cur, wanted));
    return most > 2 * otherDescriptors ? most - otherDescriptors : most / 2;
}

void loadCertificate(net::ssl::context& context, const ServerOptions& options) {
    beast::error_code error;
    context.set_options(net::ssl::context::default_workarounds | net::ssl::context::no_sslv2 |
                        net::ssl::context::no_sslv3 | net::ssl::context::no_tlsv1 |
                        net::ssl::context::no_tlsv1_1);
    context.use_certificate_chain_file(options.certificate, error);
    if (error) {
        throw InputError({options.certificate, 0}, "expected a certificate in PEM: " + error.message());
    }
    context.use_private_key_file(options.key, net::ssl::context::pem, error);
    if (error) {
        throw InputError({options.key, 0}, "expected the certificate's key in PEM: " + error.message());
    }
}

std::string stringOf(beast::string_view text) {
    return {text.data(), text.size()};
}

} // namespace

/** All that belongs to the server's thread, once it runs. */
class Server::Works {
public:
    Works(const ServerOptions& options, Ask ask, EventRing& events);

    std::string address() const;
    void start();
    void stop();

private:
    class Client;
    template <typename Stream>
    class Connection;

    void accept();
    void accepted(const beast::error_code& error, tcp::socket socket);
    void beat();
    /** Gives those who follow events what there is. */
    void pump();

    Gate m_gate;
    Ask m_ask;
    EventRing& m_events;
    const std::size_t m_mostConnections;
    /** Connections leave it when they go, the last ones with the context. */
    std::set<Client*> m_clients;
    net::io_context m_context{1};
    std::optional<net::ssl::context> m_encryption;
    tcp::acceptor m_acceptor{m_context};
    net::steady_timer m_beat{m_context};
    net::steady_timer m_pause{m_context};
    tcp::endpoint m_endpoint;
    std::atomic<bool> m_isPumping{false};
    bool m_isStopping = false;
    std::thread m_thread;
};

/** A connection, whatever carries it. */
class Server::Works::Client {
public:
    explicit Client(Works& works) : m_works(works) { m_works.m_clients.insert(this); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    virtual ~Client() { m_works.m_clients.erase(this); }

    virtual void hangUp() = 0;
    /** Of one who follows events: writes what is new, unless it still writes; `isBeat`: at least a comment.
     */
    virtual void pump(bool isBeat) = 0;

protected:
    Works& m_works;
};

/** One connection, with its requests one after the other, until one of them is to follow the events. */
template <typename Stream>
class Server::Works::Connection final : public Client,
                                        public std::enable_shared_from_this<Connection<Stream>> {
public:
    static constexpr bool isEncrypted = !std::is_same_v<Stream, beast::tcp_stream>;

    template <typename... Arguments>
    Connection(Works& works, Gate::Way way, std::string who, Arguments&&... arguments)
        : Client(works),
          m_way(std::move(way)),
          m_who(std::move(who)),
          m_stream(std::forward<Arguments>(arguments)...) {}

    void begin() {
        if constexpr (isEncrypted) {
            socket().expires_after(handshakeTime);
            m_stream.async_handshake(net::ssl::stream_base::server,
                                     [self = this->shared_from_this()](const beast::error_code& error) {
                                         if (!error) {
                                             self->readHeader();
                                         }
                                     });
        } else {
            readHeader();
        }
    }

    void hangUp() override {
        beast::error_code ignored;
        socket().socket().close(ignored);
    }

    void pump(bool isBeat) override {
        if (!m_isFollowing || m_isWriting) {
            return;
        }
        const std::optional<EventRing::Piece> piece = this->m_works.m_events.after(m_seen, mostPieceBytes);
        if (!piece) { // it has not read for so long that they are gone: it may come back and be told so
            hangUp();
            return;
        }
        m_seen = piece->last;
        m_text = piece->text.empty() && isBeat ? ":\n\n" : piece->text;
        if (!m_text.empty()) {
            writeText();
        }
    }

private:
    beast::tcp_stream& socket() { return beast::get_lowest_layer(m_stream); }

    void readHeader() {
        m_parser.emplace();
        m_parser->header_limit(mostHeaderBytes);
        m_parser->body_limit(mostBodyBytes);
        socket().expires_after(headerTime);
        http::async_read_header(m_stream, m_buffer, *m_parser,
                                [self = this->shared_from_this()](const beast::error_code& error,
                                                                  std::size_t) { self->headerCame(error); });
    }

    const std::string* header(http::field field, std::string& kept) const {
        const auto found = m_parser->get().find(field);
        if (found == m_parser->get().end()) {
            return nullptr;
        }
        kept = stringOf(found->value());
        return &kept;
    }

    std::optional<Problem> whyNot() const {
        std::string host;
        std::string origin;
        std::string authorization;
        const bool hasTwoHosts = m_parser->get().count(http::field::host) > 1;
        // Which is nobody's origin.
        static const std::string several = "several";
        const bool hasTwoOrigins = m_parser->get().count(http::field::origin) > 1;
        return this->m_works.m_gate.whyNot(
            m_way, {hasTwoHosts ? nullptr : header(http::field::host, host),
                    hasTwoOrigins ? &several : header(http::field::origin, origin),
                    header(http::field::authorization, authorization),
                    m_parser->get().target() == beast::string_view(pagePath.data(), pagePath.size())});
    }

    void headerCame(const beast::error_code& error) {
        if (error) {
            refuse(error);
            return;
        }
        m_isLast = !m_parser->get().keep_alive();
        m_isHead = m_parser->get().method() == http::verb::head;
        if (const auto problem = whyNot()) {
            m_isLast = true; // nobody reads the body
            write(problem->answer());
            return;
        }
        if (beast::iequals(m_parser->get()[http::field::expect], "100-continue")) {
            m_text = "HTTP/1.1 100 Continue\r\n\r\n";
            socket().expires_after(writeTime);
            net::async_write(
                m_stream, net::buffer(m_text),
                [self = this->shared_from_this()](const beast::error_code& failure, std::size_t) {
                    if (!failure) {
                        self->readBody();
                    }
                });
            return;
        }
        readBody();
    }

    void readBody() {
        socket().expires_after(bodyTime);
        http::async_read(m_stream, m_buffer, *m_parser,
                         [self = this->shared_from_this()](const beast::error_code& error, std::size_t) {
                             self->requestCame(error);
                         });
    }

    /** What is no request, and could still be told so. */
    void refuse(const beast::error_code& error) {
        m_isLast = true;
        if (error == http::error::header_limit || error == http::error::buffer_overflow) {
            write(Problem(ProblemKind::headerTooLarge,
                          "expected a header of at most " + std::to_string(mostHeaderBytes) + " bytes")
                      .answer());
        } else if (error == http::error::body_limit) {
            write(Problem(ProblemKind::tooLarge,
                          "expected a body of at most " + std::to_string(mostBodyBytes) + " bytes")
                      .answer());
        } else if (error != http::error::end_of_stream && error != http::error::partial_message &&
                   error.category() == http::make_error_code(http::error::bad_method).category()) {
            write(Problem(ProblemKind::badRequest, "no request of HTTP: " + error.message()).answer());
        }
    }

    void requestCame(const beast::error_code& error) {
        if (error) {
            refuse(error);
            return;
        }
        const auto& message = m_parser->get();
        Request request;
        request.method = stringOf(message.method_string());
        request.path = stringOf(message.target());
        const std::size_t question = std::min(request.path.find('?'), request.path.size());
        request.query = request.path.substr(std::min(question + 1, request.path.size()));
        request.path.resize(question);
        request.contentType = stringOf(message[http::field::content_type]);
        request.body = message.body();
        request.who = m_who;
        if (const auto answer = answerWithoutRadio(request)) {
            write(*answer);
        } else if (request.path == eventsPath) {
            follow();
        } else {
            ask(std::move(request));
        }
    }

    void ask(Request request) {
        const bool isTaken =
            this->m_works.m_ask(std::move(request), [self = this->shared_from_this()](Answer answer) {
                net::post(self->m_works.m_context,
                          [self, answer = std::move(answer)] { self->write(answer); });
            });
        if (!isTaken) {
            Answer answer = Problem(ProblemKind::busy, "too many requests wait for the radio").answer();
            answer.headers.emplace_back("Retry-After", "1");
            write(answer);
        }
    }

    void write(const Answer& answer) {
        auto response = std::make_shared<http::response<http::string_body>>();
        response->version(11);
        response->result(static_cast<unsigned>(answer.status));
        response->set(http::field::content_type, answer.contentType);
        response->set(http::field::cache_control, "no-store");
        response->set("X-Content-Type-Options", "nosniff");
        if (answer.status == statusOf(ProblemKind::unauthorised)) {
            response->set(http::field::www_authenticate, "Bearer");
        }
        for (const auto& [name, value] : answer.headers) {
            response->set(name, value);
        }
        response->keep_alive(!m_isLast);
        response->content_length(answer.body.size());
        if (!m_isHead) {
            response->body() = answer.body;
        }
        socket().expires_after(writeTime);
        auto written = [self = this->shared_from_this(), response](const beast::error_code& error,
                                                                   std::size_t) {
            if (error) {
                return;
            }
            if (self->m_isLast) {
                self->close();
            } else {
                self->readHeader();
            }
        };
        if (m_isHead) {
            const auto serializer = std::make_shared<http::response_serializer<http::string_body>>(*response);
            http::async_write_header(m_stream, *serializer,
                                     [serializer, written](const beast::error_code& error, std::size_t size) {
                                         written(error, size);
                                     });
        } else {
            http::async_write(m_stream, *response, written);
        }
    }

    /** What the client still sends is read for a while, so that it sees the answer and no broken connection.
     */
    void close() {
        beast::error_code ignored;
        socket().socket().shutdown(tcp::socket::shutdown_send, ignored);
        socket().expires_after(seconds(1));
        drain();
    }

    void drain() {
        m_buffer.clear();
        socket().async_read_some(
            m_buffer.prepare(mostHeaderBytes),
            [self = this->shared_from_this()](const beast::error_code& error, std::size_t) {
                if (!error) {
                    self->drain();
                }
            });
    }

    void follow() {
        std::string kept;
        const EventRing& events = this->m_works.m_events;
        const auto found = m_parser->get().find("Last-Event-ID");
        std::string_view name;
        if (found != m_parser->get().end()) {
            kept = stringOf(found->value());
            name = kept;
        }
        const std::optional<std::uint64_t> seen = events.numberOf(name);
        const bool isAllThere = seen && *seen + 1 >= events.first();
        m_seen = isAllThere ? *seen : name.empty() ? events.last() : events.first() - 1;
        m_text = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nCache-Control: no-store\r\n"
                 "X-Content-Type-Options: nosniff\r\nConnection: close\r\n\r\n";
        if (m_isHead) {
            m_isLast = true;
        } else {
            m_text += name.empty() || isAllThere
                          ? ":\n\n"
                          : "event: gap\ndata: {\"schema\":1,\"event\":\"gap\",\"after\":\"" +
                                events.nameOf(m_seen) + "\"}\n\n";
            m_isFollowing = true;
            watch();
        }
        writeText();
    }

    /** Nothing is expected of one who follows events but that it goes one day. */
    void watch() {
        socket().expires_never();
        m_buffer.clear();
        m_stream.async_read_some(
            m_buffer.prepare(mostHeaderBytes),
            [self = this->shared_from_this()](const beast::error_code& error, std::size_t) {
                if (error) {
                    self->m_isFollowing = false;
                    self->hangUp();
                } else {
                    self->watch();
                }
            });
    }

    void writeText() {
        m_isWriting = true;
        socket().expires_after(writeTime);
        net::async_write(m_stream, net::buffer(m_text),
                         [self = this->shared_from_this()](const beast::error_code& error, std::size_t) {
                             self->m_isWriting = false;
                             if (error) {
                                 self->m_isFollowing = false;
                                 self->hangUp();
                             } else if (self->m_isLast && !self->m_isFollowing) {
                                 self->close();
                             } else {
                                 self->pump(false);
                             }
                         });
    }

    const Gate::Way m_way;
    const std::string m_who;
    Stream m_stream;
    beast::flat_buffer m_buffer{2 * mostHeaderBytes + mostBodyBytes};
    std::optional<http::request_parser<http::string_body>> m_parser;
    /** After the answer that is being made, the connection ends. */
    bool m_isLast = false;
    bool m_isHead = false;
    bool m_isFollowing = false;
    bool m_isWriting = false;
    /** The event that was written last. */
    std::uint64_t m_seen = 0;
    /** What is being written, of events. */
    std::string m_text;
};

Server::Works::Works(const ServerOptions& options, Ask ask, EventRing& events)
    : m_gate(options.token.empty() ? std::string() : readToken(options.token), options.names),
      m_ask(std::move(ask)),
      m_events(events),
      m_mostConnections(raiseConnections()),
      m_endpoint(endpointOf(options.listen)) {
    if (options.certificate.empty() != options.key.empty()) {
        throw InputError({"--listen", 0}, "expected --certificate and --key both, or none of them");
    }
    if (!m_endpoint.address().is_loopback() && (options.token.empty() || options.certificate.empty())) {
        throw InputError({"--listen", 0}, inQuotes(options.listen) +
                                              " can be reached by others, expected --token, --certificate "
                                              "and --key as well, or an address of the loopback");
    }
    if (!options.certificate.empty()) {
        m_encryption.emplace(net::ssl::context::tls_server);
        loadCertificate(*m_encryption, options);
    }
    beast::error_code error;
    m_acceptor.open(m_endpoint.protocol(), error);
    if (!error) {
        m_acceptor.set_option(net::socket_base::reuse_address(true), error);
        m_acceptor.bind(m_endpoint, error);
    }
    if (!error) { // connections have it from whom accepts them
        m_acceptor.set_option(net::socket_base::send_buffer_size(mostKeptBytes), error);
    }
    if (!error) {
        m_acceptor.listen(net::socket_base::max_listen_connections, error);
    }
    if (error) {
        throw InputError({"--listen", 0}, inQuotes(options.listen) + " cannot be taken: " + error.message());
    }
    m_endpoint = m_acceptor.local_endpoint();
    m_events.setListener([this] {
        if (!m_isPumping.exchange(true)) {
            net::post(m_context, [this] { pump(); });
        }
    });
}

std::string Server::Works::address() const {
    return std::string(m_encryption ? "https" : "http") + "://" + addressText(m_endpoint.address()) + ":" +
           std::to_string(m_endpoint.port()) + "/";
}

void Server::Works::start() {
    accept();
    beat();
    m_thread = std::thread([this] {
        // What goes wrong with one connection, for want of memory for example, is no reason to leave the
        // others.
        for (;;) {
            try {
                m_context.run();
                return;
            } catch (const std::exception&) {
                continue;
            }
        }
    });
}

void Server::Works::stop() {
    if (!m_thread.joinable()) {
        return;
    }
    net::post(m_context, [this] {
        m_isStopping = true;
        beast::error_code ignored;
        m_acceptor.close(ignored);
        m_pause.cancel();
        // Answers that are on their way have a moment.
        m_beat.expires_after(std::chrono::milliseconds(200));
        m_beat.async_wait([this](const beast::error_code&) {
            for (Client* const client : std::set<Client*>(m_clients)) {
                client->hangUp();
            }
            m_context.stop();
        });
    });
    m_thread.join();
}

void Server::Works::accept() {
    m_acceptor.async_accept(
        [this](const beast::error_code& error, tcp::socket socket) { accepted(error, std::move(socket)); });
}

void Server::Works::accepted(const beast::error_code& error, tcp::socket socket) {
    if (m_isStopping || !m_acceptor.is_open()) {
        return;
    }
    if (error) { // too many descriptors, most often: some will be free again
        m_pause.expires_after(std::chrono::milliseconds(100));
        m_pause.async_wait([this](const beast::error_code& cancelled) {
            if (!cancelled) {
                accept();
            }
        });
        return;
    }
    beast::error_code failure;
    const tcp::endpoint here = socket.local_endpoint(failure);
    const tcp::endpoint there = failure ? tcp::endpoint() : socket.remote_endpoint(failure);
    if (!failure && m_clients.size() < m_mostConnections) {
        socket.set_option(tcp::no_delay(true), failure);
        socket.set_option(net::socket_base::keep_alive(true), failure);
        Gate::Way way{addressText(here.address()), here.port(), here.address().is_loopback(),
                      m_encryption.has_value()};
        std::string who = addressText(there.address()) + ":" + std::to_string(there.port());
        if (m_encryption) {
            using Stream = beast::ssl_stream<beast::tcp_stream>;
            std::make_shared<Connection<Stream>>(*this, std::move(way), std::move(who), std::move(socket),
                                                 *m_encryption)
                ->begin();
        } else {
            std::make_shared<Connection<beast::tcp_stream>>(*this, std::move(way), std::move(who),
                                                            std::move(socket))
                ->begin();
        }
    }
    accept();
}

void Server::Works::beat() {
    m_beat.expires_after(beatInterval);
    m_beat.async_wait([this](const beast::error_code& cancelled) {
        if (!cancelled) {
            for (Client* const client : std::set<Client*>(m_clients)) {
                client->pump(true);
            }
            beat();
        }
    });
}

void Server::Works::pump() {
    m_isPumping = false;
    for (Client* const client : m_clients) {
        client->pump(false);
    }
}

Server::Server(const ServerOptions& options, Ask ask, EventRing& events)
    : m_works(std::make_unique<Works>(options, std::move(ask), events)) {}

Server::~Server() {
    stop();
}

std::string Server::address() const {
    return m_works->address();
}

void Server::start() {
    m_works->start();
}

void Server::stop() {
    m_works->stop();
}

} // namespace Radio::Service
