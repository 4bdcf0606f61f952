// Who writes a file of the user's says so, as long as it does.
#pragma once

namespace veltrac {

// An advisory lock on an open file: two programs that change one file do so one after the other.
//
// The system lets go of it when the process ends, however it ends, so none is ever left behind. Where the
// file system knows no locks there is none, and nothing else changes.
class FileLock
{
public:
    // Borrows the descriptor. Throws std::system_error: EWOULDBLOCK where another program is writing the
    // file, ESTALE where no name leads to it any more.
    explicit FileLock(int descriptor);
    ~FileLock() { release(); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    void release() noexcept;
    // Throws ESTALE where the file has lost its last name since: what was written into it nobody will find.
    void requireNamed() const;

private:
    int m_descriptor;
};

}  // namespace veltrac
