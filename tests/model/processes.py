"""Work shared between processes. multiprocessing.Pool would do, but its semaphores need a /dev/shm that everybody may
write to."""

import multiprocessing

COUNT = 2


def work_off(end, worker, items):
    work = worker()  # until the return, which removes its temporary files
    for item in items:
        end.send(work(item))


def results(worker, items):
    """Yields work(item) for each item, in their order. `work` is what worker() returns, once in each process."""
    fork = multiprocessing.get_context("fork")
    processes, ends = [], []
    for first in range(COUNT):
        ours, theirs = fork.Pipe(duplex=False)
        processes.append(fork.Process(target=work_off, args=(theirs, worker, items[first::COUNT]), daemon=True))
        processes[-1].start()
        theirs.close()  # otherwise recv() would wait for a process that has died
        ends.append(ours)
    for number in range(len(items)):
        yield ends[number % COUNT].recv()
    for process in processes:
        process.join()
