// The server of the library with bounds to what others can take of it: threads come as connections
// do, and no request may drip in. For server.cpp.
#pragma once

// Its own warnings are its own.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <httplib.h>
#pragma GCC diagnostic pop

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quor_host {

/// A thread for each connection that is open; those that are done wait for another one.
class ConnectionThreads : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> task) override {
    const std::lock_guard guard(lock_);
    tasks_.push_back(std::move(task));
    if (tasks_.size() > idle_ && threads_.size() < most) {
      threads_.emplace_back([this] { work(); });
    } else {
      changed_.notify_one();
    }
  }

  void shutdown() override {
    {
      const std::lock_guard guard(lock_);
      is_over_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }

 private:
  static constexpr size_t most = 512;

  void work() {
    for (std::unique_lock guard(lock_);;) {
      ++idle_;
      changed_.wait(guard, [this] { return is_over_ || !tasks_.empty(); });
      --idle_;
      if (tasks_.empty()) return;
      const std::function<void()> task = std::move(tasks_.front());
      tasks_.pop_front();
      guard.unlock();
      task();
      guard.lock();
    }
  }

  std::mutex lock_;  ///< guards all below but the threads' ends
  std::condition_variable changed_;
  std::deque<std::function<void()>> tasks_;
  std::vector<std::thread> threads_;
  size_t idle_ = 0;
  bool is_over_ = false;
};

/// A connection whose requests must come in some time, however often a byte of them comes.
class PatientStream : public httplib::Stream {
 public:
  explicit PatientStream(httplib::Stream& stream) : stream_(stream) { current() = this; }
  ~PatientStream() override { current() = nullptr; }
  PatientStream(const PatientStream&) = delete;
  PatientStream& operator=(const PatientStream&) = delete;

  /// That of the request which this thread answers.
  static PatientStream*& current() {
    thread_local PatientStream* stream = nullptr;
    return stream;
  }

  /// The head has come, the body may take longer.
  void wait_for_body() { end_ = Clock::now() + std::chrono::minutes(1); }
  /// Nothing more is read.
  void close() { end_ = Clock::time_point::min(); }

  bool is_open() const { return Clock::now() < end_; }

  bool is_readable() const override { return is_open() && stream_.is_readable(); }
  bool is_writable() const override { return stream_.is_writable(); }
  ssize_t read(char* bytes, size_t size) override {
    return is_open() ? stream_.read(bytes, size) : -1;
  }
  ssize_t write(const char* bytes, size_t size) override { return stream_.write(bytes, size); }
  void get_remote_ip_and_port(std::string& ip, int& port) const override {
    stream_.get_remote_ip_and_port(ip, port);
  }
  void get_local_ip_and_port(std::string& ip, int& port) const override {
    stream_.get_local_ip_and_port(ip, port);
  }
  socket_t socket() const override { return stream_.socket(); }

 private:
  using Clock = std::chrono::steady_clock;

  httplib::Stream& stream_;
  Clock::time_point end_ = Clock::now() + std::chrono::seconds(10);
};

class PatientServer : public httplib::Server {
 public:
  PatientServer() {
    new_task_queue = [] { return new ConnectionThreads; };
    set_pre_routing_handler([](const httplib::Request& request, httplib::Response& response) {
      PatientStream* const stream = PatientStream::current();
      stream->wait_for_body();
      if (!is_ambiguous(request) && request.ranges.empty()) return HandlerResponse::Unhandled;
      response.status = request.ranges.empty() ? 400 : 416;
      stream->close();  // where another request would begin nobody knows
      return HandlerResponse::Handled;
    });
  }

 private:
  /// Whether the request can be read in two ways, of which another program on the way took the
  /// other.
  static bool is_ambiguous(const httplib::Request& request) {
    const size_t lengths = request.get_header_value_count("Content-Length");
    return lengths > 1 || (lengths > 0 && request.has_header("Transfer-Encoding"));
  }

  // As that of the library, over another stream.
  bool process_and_close_socket(socket_t socket) override {
    const bool is_done = httplib::detail::process_server_socket(
        svr_sock_, socket, keep_alive_max_count_, keep_alive_timeout_sec_, read_timeout_sec_,
        read_timeout_usec_, write_timeout_sec_, write_timeout_usec_,
        [this](httplib::Stream& stream, bool is_last, bool& is_closed) {
          PatientStream patient(stream);
          const bool is_answered = process_request(patient, is_last, is_closed, nullptr);
          return is_answered && patient.is_open();
        });
    httplib::detail::shutdown_socket(socket);
    httplib::detail::close_socket(socket);
    return is_done;
  }
};

}  // namespace quor_host
