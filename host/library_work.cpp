#include "host/library_work.h"

#include <chrono>
#include <filesystem>
#include <new>

#include "host/console.h"
#include "host/exit_codes.h"
#include "host/failure.h"
#include "host/opened_file.h"
#include "host/stop_signal.h"
#include "host/work_queue.h"

namespace atdp::host {
namespace {

constexpr std::chrono::milliseconds kGlance(50);  // between looks at stop signals and the time

FileResult resultOf(const LibraryFile& file, const LibraryWork& work) {
    try {
        if (file.error != 0) throw Failure(file.path, wordsForErrno(file.error));
        return work.work(file);
    } catch (const DiskFull&) {
        throw;  // each of the other files would meet it too
    } catch (const Failure& failure) {
        return {Outcome::kFailed, {}, failure.what()};
    } catch (const std::filesystem::filesystem_error& failure) {
        return {Outcome::kFailed, {}, file.path + ": " + failure.code().message()};
    } catch (const std::bad_alloc&) {
        return {Outcome::kFailed, {}, file.path + ": out of memory"};
    }
}

FileResult awaitNext(WorkQueue& queue, LibraryProgress& progress) {
    while (true) {
        checkForStop();
        progress.update();
        if (std::optional<FileResult> result = queue.next(kGlance)) return *std::move(result);
    }
}

int deliverAll(const Library& library, std::uint32_t jobs, const LibraryWork& work,
               LibraryProgress& progress) {
    int exitCode = kExitOk;
    WorkQueue queue(library.files.size(), jobs, [&](std::size_t item) {
        FileResult result = resultOf(library.files[item], work);
        progress.add(result.outcome);
        return result;
    });
    const auto tellFailure = [&](const FileResult& result) {
        if (result.outcome != Outcome::kFailed) return;
        exitCode = kExitFailed;
        progress.clear();
        if (!result.error.empty()) printError(result.error);
    };
    try {
        for (const LibraryFile& file : library.files) {
            const FileResult result = awaitNext(queue, progress);
            tellFailure(result);
            if (work.deliver) work.deliver(file, result);
        }
    } catch (const ClosedPipe&) {
        throw;  // nobody listens any more
    } catch (...) {
        for (const FileResult& result : queue.stop()) tellFailure(result);
        throw;
    }
    return exitCode;
}

}  // namespace

int workThrough(const Library& library, std::uint32_t jobs, const LibraryWork& work,
                LibraryProgress& progress) {
    const auto sumUp = [&] {
        progress.clear();
        if (!work.summaryWord.empty()) printError(progress.summary(work.summaryWord));
    };
    try {
        const int exitCode = deliverAll(library, jobs, work, progress);
        sumUp();
        return exitCode;
    } catch (const Interrupted&) {
        sumUp();
        throw;
    } catch (const DiskFull& failure) {
        progress.clear();
        printError(failure.what());
        sumUp();
        return kExitFailed;
    }
}

bool isOtherFile(PluginModule& module, const SoundNames& names, const LibraryFile& file) {
    return !file.named && file.error == 0 && !names.contains(file.path) &&
           module.plugin().findDecoderClassByPath(file.path) == nullptr &&
           !whyUnreadable(file.path);
}

}  // namespace atdp::host
