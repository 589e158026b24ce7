// Completion: the record prepared in the background after each stroke, kept as the cached signature,
// and the requests of "will be done" and "done" waiting for it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace scrivlet {

class QnScheduler;
class QnScrivletController;
class QnSignature;
class QnTimer;

class QnRecordCompletion {
 public:
  // How the answers reach the host.
  struct Answers {
    std::function<void(std::shared_ptr<QnSignature>)> willComplete, didComplete;
    std::function<void()> didCompleteWithNothing;
  };
  explicit QnRecordCompletion(Answers answers);

  // After the delay, unless invalidated first, the preparer prepares its record in the background; the
  // record comes back on the main thread while the owner lives, as the cached signature, and answers
  // the requests waiting. The cached signature is dropped and an earlier timer invalidated now.
  void prepareAfterDelay(std::shared_ptr<QnScrivletController> preparer, std::weak_ptr<QnScrivletController> owner,
                         QnScheduler& scheduler, double delay);
  void runTimerBlock();
  void invalidateTimer();
  // Answered at once from the cache, or when the preparation under way finishes; nothing to answer
  // for an empty canvas ("done" says so).
  void willBeDone(bool canvasIsEmpty);
  void done(bool canvasIsEmpty);

  uint8_t willBeDoneCallbackRequested = 0;
  uint8_t doneCallbackRequested = 0;
  std::shared_ptr<QnSignature> cachedSignature;
  std::shared_ptr<QnTimer> cacheTimer;
  std::function<void()> cacheTimerBlock;

 private:
  void prepared(std::shared_ptr<QnSignature> record);

  Answers answers_;
};

}  // namespace scrivlet
