// bare_idle PORT [MS]: a libuv loop with one listener and nothing else, or beside it a timer of MS
// milliseconds that does nothing. What the servent's start and its idling are measured against.
#include <uv.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::fprintf(stderr, "bare_idle PORT [MS]\n");
    return 2;
  }
  uv_loop_t* loop = uv_default_loop();
  uv_tcp_t listener;
  uv_tcp_init(loop, &listener);
  sockaddr_in address{};
  uv_ip4_addr("127.0.0.1", std::atoi(argv[1]), &address);
  uv_tcp_bind(&listener, reinterpret_cast<const sockaddr*>(&address), 0);
  auto* stream = reinterpret_cast<uv_stream_t*>(&listener);
  if (uv_listen(stream, 200, [](uv_stream_t*, int) {}) != 0) {
    std::fprintf(stderr, "bare_idle: cannot listen\n");
    return 1;
  }
  uv_timer_t timer;
  if (argc == 3) {
    const auto period_ms = static_cast<std::uint64_t>(std::atoi(argv[2]));
    uv_timer_init(loop, &timer);
    uv_timer_start(
        &timer, [](uv_timer_t*) {}, period_ms, period_ms);
  }
  std::printf("bare_idle runs\n");
  std::fflush(stdout);
  uv_run(loop, UV_RUN_DEFAULT);
}
