"""Work shared between processes. (The semaphores of multiprocessing.Pool need a /dev/shm that the user may write
to.)"""

import multiprocessing

COUNT = 2


def process_items(end, worker, items):
    work = worker()  # returning destroys it, which removes its temporary files
    for item in items:
        end.send(work(item))


def results(worker, items):
    """Yields work(item) for each item, in their order. `work` is what worker() returns, once in each process."""
    fork = multiprocessing.get_context("fork")
    processes, ends = [], []
    for first in range(COUNT):
        ours, theirs = fork.Pipe(duplex=False)
        processes.append(fork.Process(target=process_items, args=(theirs, worker, items[first::COUNT]), daemon=True))
        processes[-1].start()
        theirs.close()  # otherwise recv() waits forever if the process dies
        ends.append(ours)
    for number in range(len(items)):
        yield ends[number % COUNT].recv()
    for process in processes:
        process.join()
