#include "fuzz/seeds/seeds.h"

#include <platform/runtime/memory_file_writer.h>

namespace
{
using Chunk = S_MemoryFileWriter::Chunk;

// Ids choose what the target reads: see fuzz/memory_file.cpp.
void writeValues(S_MemoryFileWriter& writer, unsigned int id)
{
    const Chunk chunk(writer, id, 1);
    writer << 7 << "a string" << M_Vector3Template<float>(1, 2, 3) << M_Matrix4x3Template<float>() << true;
    writer.writeList(S_Vector<S_String>{"hip", "knee"});
    writer.writeList(S_Vector<int>{1, 2, 3});
}

const fuzz::SeedSource s_values("memory_file",
                                [](fuzz::SeedFolder& seeds)
                                {
                                    for (unsigned int id = 0; id < 16; ++id)
                                    {
                                        S_MemoryFileWriter writer;
                                        writeValues(writer, id);
                                        seeds.add("values_" + std::to_string(id), writer.getBytes());
                                    }
                                });

const fuzz::SeedSource s_nested("memory_file",
                                [](fuzz::SeedFolder& seeds)
                                {
                                    S_MemoryFileWriter writer;
                                    {
                                        const Chunk outer(writer, 0, 0);
                                        {
                                            const Chunk middle(writer, 0, 2);
                                            writeValues(writer, 1);
                                            writeValues(writer, 6);
                                        }
                                        writeValues(writer, 9);
                                    }
                                    const Chunk last(writer, 3, 0);
                                    seeds.add("nested", writer.getBytes());
                                });
}  // namespace
