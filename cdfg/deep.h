// Recursion as deep as the graph, on the heap instead of the program's stack.
//
// Expressions nest as deep as their author (or a generator) likes: a million levels are no error.
// A function that would call itself for each level is written as a coroutine instead:
//
//   Deep<int> Height(const CdfgGraph* graph, NodeId node, DepthGuard& guard) {
//     const DepthScope scope(guard, node);
//     co_return 1 + co_await Height(graph, CdfgGetAttr(graph, node, DfgOpe_LEFT), guard);
//   }
//   const int height = RunDeep(Height(graph, node, guard));
//
// It reads like plain recursion. `co_await` calls, `co_return` answers; RunDeep starts the
// outermost call and drives it to its end. A call's frame is some hundred bytes in a block that
// grows and shrinks like a stack; a call costs a few nanoseconds more than a native one. Await each
// call where it is made (do not store a Deep), so that frames come and go like calls.
#pragma once

#include <coroutine>
#include <cstddef>
#include <exception>
#include <utility>

namespace deep {

// The call that runs next; the innermost one.
inline std::coroutine_handle<> innermost;
// An exception on its way from a call to its caller. Nothing of ours throws; a stop handler of a
// test may (CdfgSetStopHandler).
inline std::exception_ptr thrown;

// Frames are taken and given back in the order of calls.
void* TakeFrame(std::size_t size);
void GiveFrameBack(void* frame, std::size_t size);

// Lets the exception go on, out of the caller.
[[noreturn]] void Rethrow();

// What every call has, whatever it answers: the caller to go on with.
struct Call {
  std::coroutine_handle<> caller;

  static void* operator new(std::size_t size) { return TakeFrame(size); }
  static void operator delete(void* frame, std::size_t size) { GiveFrameBack(frame, size); }

  struct Finish {
    bool await_ready() noexcept { return false; }
    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> self) noexcept {
      innermost = self.promise().caller;
    }
    void await_resume() noexcept {}
  };

  std::suspend_always initial_suspend() noexcept { return {}; }
  Finish final_suspend() noexcept { return {}; }
  void unhandled_exception() { thrown = std::current_exception(); }
};

template <class Answer>
struct Promise : Call {
  Answer answer{};
  std::coroutine_handle<Promise> get_return_object() {
    return std::coroutine_handle<Promise>::from_promise(*this);
  }
  void return_value(Answer value) { answer = std::move(value); }
  Answer TakeAnswer() { return std::move(answer); }
};

template <>
struct Promise<void> : Call {
  std::coroutine_handle<Promise> get_return_object() {
    return std::coroutine_handle<Promise>::from_promise(*this);
  }
  void return_void() {}
  void TakeAnswer() {}
};

// Resumes the innermost call until `outermost` has ended.
void Drive(std::coroutine_handle<> outermost);

}  // namespace deep

// A call of a deep function, not yet run.
template <class Answer = void>
class [[nodiscard]] Deep {
 public:
  using promise_type = deep::Promise<Answer>;

  Deep(std::coroutine_handle<promise_type> frame) : frame_(frame) {}
  Deep(Deep&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
  Deep& operator=(Deep&&) = delete;
  ~Deep() {
    if (frame_) frame_.destroy();
  }

  bool await_ready() const { return false; }
  void await_suspend(std::coroutine_handle<> caller) {
    frame_.promise().caller = caller;
    deep::innermost = frame_;
  }
  Answer await_resume() {
    if (deep::thrown) deep::Rethrow();
    return frame_.promise().TakeAnswer();
  }

  // For RunDeep: runs the call to its end, with no caller to go on with.
  Answer Run() {
    const std::coroutine_handle<> outer = deep::innermost;
    deep::innermost = frame_;
    deep::Drive(frame_);
    deep::innermost = outer;
    return await_resume();
  }

 private:
  std::coroutine_handle<promise_type> frame_;
};

// Runs a deep function from ordinary code and answers what it answers.
template <class Answer>
Answer RunDeep(Deep<Answer> call) {
  return call.Run();
}
