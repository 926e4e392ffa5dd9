// Worker.h - a worker process of an export: reads what mails hold, and writes what becomes of it.
#ifndef TARN_ARCHIVE_WORKER_H
#define TARN_ARCHIVE_WORKER_H

#include <functional>
#include <string>
#include <vector>

namespace tarn::archive {

// Called with the id of each item before it is exported, and with an empty one before a source is
// added up.
using ItemHook = std::function<void(const std::string& id)>;

// Answers requests until the other end of the channel is closed; the words are those after
// kWorkerWord. The exit status of the process.
int RunWorker(const std::vector<std::string>& words, const ItemHook& hook = {});

// What the worker process is to be, before it reads anything: it ends with the one that started it,
// has no more memory than that, and a file that the system lets grow no further is a failed write.
// One folder a system implements it.
void PrepareWorker(unsigned long long memory);

}  // namespace tarn::archive

#endif
