// Debian's mosquitto started on a loopback port for a test or a benchmark, always native (in a
// cross build too), killed when the object goes. Header-only so the benchmarks can use it.
#pragma once

#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>

namespace irctest {

class CBrokerProcess {
public:
    // A free loopback port, as the kernel hands one out.
    static int FreePort() {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        ::bind(fd, reinterpret_cast<sockaddr*>(&address), size);
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
        ::close(fd);
        return ntohs(address.sin_port);
    }

    // `extra`: more lines for the broker's configuration file.
    CBrokerProcess(const std::string& program, int port, const std::string& extra = "")
        : program_(program), port_(port), config_("/tmp/irc-mosquitto-" + std::to_string(port) + ".conf") {
        std::ofstream(config_) << "listener " << port << " 127.0.0.1\nallow_anonymous true\npersistence false\n"
                               << "max_queued_messages 100000\n"
                               << extra;
    }
    ~CBrokerProcess() {
        Stop();
        ::unlink(config_.c_str());
    }
    CBrokerProcess(const CBrokerProcess&) = delete;
    CBrokerProcess& operator=(const CBrokerProcess&) = delete;

    int Port() const { return port_; }
    void Start() {
        pid_ = ::fork();
        if (pid_ == 0) {
            ::execl(program_.c_str(), "mosquitto", "-c", config_.c_str(), static_cast<char*>(nullptr));
            ::_exit(127);
        }
    }
    void Stop() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

private:
    std::string program_;
    int port_;
    std::string config_;
    pid_t pid_ = -1;
};

}  // namespace irctest
