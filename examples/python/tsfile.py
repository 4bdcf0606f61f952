"""A ts-file as a numpy array, without a copy, and an array as a ts-file (docs/ts-file.md)."""
import numpy


def open_ts(name, mode="r"):
    """The values of a ts-file as they stand on the disk, rows by columns; mode "r+" lets them be changed."""
    head = numpy.fromfile(name, "<u4", 128)
    order = "<" if head[127] <= 1000 else ">"
    samples, columns = head[:2] if order == "<" else head[:2].byteswap()
    return numpy.memmap(name, order + "f4", mode, 512 * ((int(columns) - 1) // 8 + 2), (samples, columns))


def save_ts(name, values, dt, names, description="", order="<"):
    """Makes a ts-file of an array of rows by columns; `dt` is the sample time in seconds."""
    values = numpy.asarray(values, order + "f4")
    samples, columns = values.shape
    head = numpy.zeros(512 * ((columns - 1) // 8 + 2), "u1")
    head[:8].view(order + "u4")[:] = samples, columns
    head[16:20].view(order + "f4")[:] = dt
    head[508:512].view(order + "u4")[:] = 3
    for at, width, text in [(32, 59, description), (92, 39, "Time[s]")] + [
            (512 + 64 * column + 7, 11, text) for column, text in enumerate(names)]:
        field = numpy.frombuffer(text.encode()[:width], "u1")
        head[at:at + len(field)] = field
    data = values.tobytes()
    with open(name, "wb") as file:
        file.write(head.tobytes() + data + bytes(-len(data) % 512))
