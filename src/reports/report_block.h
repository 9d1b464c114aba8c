#pragma once

#include <functional>
#include <memory>
#include <string>

#include "storage/mv_app_root.h"

/// How a report is made: as one block of the database queue, under the name of its class.
namespace moniva {

/// Makes it on the queue and hands the result to `completion` on the main thread. What could not be read is
/// in the fault log too. What `work` refers to has to live until then.
template <class Answer>
void reportInBackground(MVAppRoot& root, std::string className,
                        std::function<Result<Answer>(Connection&)> work,
                        std::function<void(const Result<Answer>&)> completion) {
  root.db().dispatchInDatabase(className, [&root, className, work = std::move(work),
                                           completion = std::move(completion)](Connection& db) {
    auto answer = std::make_shared<const Result<Answer>>(work(db));
    if (!*answer) root.db().faultLog().line(fmt::format("== {} {}", className, answer->error().why));
    root.platform().mainQueue.dispatch([completion, answer] { completion(*answer); });
  });
}

/// Makes it on the queue and waits for it. Refused as well when the store is closed or busy with other work.
template <class Answer>
Result<Answer> reportNow(MVAppRoot& root, std::string_view className,
                         const std::function<Result<Answer>(Connection&)>& work) {
  Result<Answer> answer = refuse("the store cannot be read: it is closed or busy with other work");
  root.db().inDatabase(className, [&](Connection& db) { answer = work(db); });
  return answer;
}

}  // namespace moniva
