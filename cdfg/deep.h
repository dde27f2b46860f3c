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
#include <utility>

namespace deep {

// The call that runs next; the innermost one.
inline std::coroutine_handle<> innermost;

// Frames are taken and given back in the order of calls.
void* TakeFrame(std::size_t size);
void GiveFrameBack(void* frame, std::size_t size);

// What every call has, whatever it answers: the caller to go on with, and the slot that holds it.
struct Call {
  std::coroutine_handle<> caller;
  Call* caller_call = nullptr;
  std::coroutine_handle<>* holder = nullptr;

  static void* operator new(std::size_t size) { return TakeFrame(size); }
  static void operator delete(void* frame, std::size_t size) { GiveFrameBack(frame, size); }

  struct Finish {
    bool await_ready() noexcept { return false; }
    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> self) noexcept {
      innermost = self.promise().caller;
      innermost_call = self.promise().caller_call;
    }
    void await_resume() noexcept {}
  };

  std::suspend_always initial_suspend() noexcept { return {}; }
  Finish final_suspend() noexcept { return {}; }
  void unhandled_exception() { throw; }

  static inline Call* innermost_call = nullptr;
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

// Puts the calls that were running back when a run within them ends, by an exception too.
class RunScope {
 public:
  RunScope() = default;
  ~RunScope() {
    innermost = innermost_;
    Call::innermost_call = call_;
  }
  RunScope(const RunScope&) = delete;
  RunScope& operator=(const RunScope&) = delete;

 private:
  std::coroutine_handle<> innermost_ = innermost;
  Call* call_ = Call::innermost_call;
};

// Resumes the innermost call until the outermost one, just made innermost, has ended. When a call
// throws, the calls within the outermost one are destroyed and the exception goes on.
void Drive(std::coroutine_handle<> outermost);

}  // namespace deep

// A call of a deep function, not yet run.
template <class Answer = void>
class [[nodiscard]] Deep {
 public:
  using promise_type = deep::Promise<Answer>;

  Deep(std::coroutine_handle<promise_type> frame) : promise_(&frame.promise()), frame_(frame) {
    promise_->holder = &frame_;
  }
  Deep(Deep&& other) noexcept
      : promise_(other.promise_), frame_(std::exchange(other.frame_, nullptr)) {
    if (frame_) promise_->holder = &frame_;
  }
  Deep& operator=(Deep&&) = delete;
  ~Deep() {
    if (frame_) frame_.destroy();
  }

  bool await_ready() const { return false; }
  void await_suspend(std::coroutine_handle<> caller) {
    promise_->caller = caller;
    MakeInnermost();
  }
  Answer await_resume() { return promise_->TakeAnswer(); }

  // For RunDeep: runs the call to its end, with no caller to go on with.
  Answer Run() {
    const deep::RunScope scope;
    MakeInnermost();
    promise_->caller_call = nullptr;
    deep::Drive(frame_);
    return promise_->TakeAnswer();
  }

 private:
  void MakeInnermost() {
    promise_->caller_call = deep::Call::innermost_call;
    deep::innermost = frame_;
    deep::Call::innermost_call = promise_;
  }

  promise_type* promise_;
  std::coroutine_handle<> frame_;
};

// Runs a deep function from ordinary code and answers what it answers.
template <class Answer>
Answer RunDeep(Deep<Answer> call) {
  return call.Run();
}
