#include "convert/converter.h"
#include "convert/output_files.h"
#include "tools/commands.h"
#include "tools/convert_summary.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace
{
using TW2::convert::ImportOptions;
using TW2::convert::Options;
using TW2::convert::Summary;

std::FILE* s_messages = stderr;

struct Arguments
{
    std::vector<std::string> models;
    std::string folder;
    std::string script;  ///< with --onto
    std::string depfile;
    std::vector<double> tolerance;
    std::string up = "auto";
    std::string loop = "auto";
    unsigned int timeout = 600;
    unsigned int jobs = 0;
    bool together = false;
    bool json = false;
    bool quiet = false;
    int progress = -1;  ///< file descriptor that is told how far it is
    Options options;
};

/// One conversion: the models that make one object.
using Job = std::vector<std::string>;

/// Runs one conversion; returns the program's exit status.
int convert(const Arguments& arguments, const Job& job)
{
    try
    {
        const Summary summary = arguments.script.empty()
                                    ? TW2::convert::convertModel(job, arguments.folder, arguments.options)
                                    : TW2::convert::addMotion(job, arguments.script, arguments.options);
        if (!arguments.depfile.empty())
        {
            tools::writeDepfile(arguments.depfile, summary);
        }
        if (arguments.json)
        {
            tools::printJson(summary);
        }
        else
        {
            tools::printSummary(summary, s_messages, !arguments.script.empty(), arguments.quiet);
        }
        return EXIT_SUCCESS;
    }
    catch (const std::exception& error)
    {
        std::fprintf(s_messages, "tw2: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

/// Importers write to standard error what they like: from here on only this command's own messages get there.
void keepMessagesApart()
{
    std::FILE* messages = fdopen(dup(STDERR_FILENO), "w");
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (messages && nowhere >= 0)
    {
        s_messages = messages;
        dup2(nowhere, STDERR_FILENO);
    }
}

/// A conversion at work in a process of its own. Importers of many formats read damaged files, and some of them crash
/// on some: so a crash becomes a message, and what one process prints does not get mixed with what another one does.
class Worker
{
public:
    Worker(const Arguments& arguments, const Job& job)
        : m_job(job), m_pOutput(std::tmpfile()), m_pMessages(std::tmpfile())
    {
        if (!m_pOutput || !m_pMessages)
        {
            throw tools::Failure(std::string("no temporary file can be made: ") + std::strerror(errno));
        }
        std::fflush(nullptr);
        m_iProcess = fork();
        if (m_iProcess < 0)
        {
            throw tools::Failure(std::string("no process can be started: ") + std::strerror(errno));
        }
        if (m_iProcess == 0)
        {
            std::signal(SIGINT, SIG_DFL);
            std::signal(SIGTERM, SIG_DFL);
            dup2(fileno(m_pOutput), STDOUT_FILENO);
            dup2(fileno(m_pMessages), STDERR_FILENO);
            alarm(arguments.timeout);
            keepMessagesApart();
            const int status = convert(arguments, m_job);
            std::fflush(nullptr);
            _exit(status);
        }
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker()
    {
        std::fclose(m_pOutput);
        std::fclose(m_pMessages);
    }

    [[nodiscard]] pid_t getProcess() const noexcept { return m_iProcess; }
    [[nodiscard]] bool isFinished() const noexcept { return m_status.has_value(); }

    void finish(int status, const Arguments& arguments)
    {
        m_status = status;
        removeUnfinished(arguments);
    }

    /// Prints what the process, which is finished, has printed; returns whether it failed.
    bool report(const Arguments& arguments) const
    {
        copy(m_pOutput, stdout);
        std::fflush(stdout);
        copy(m_pMessages, stderr);
        if (WIFSIGNALED(*m_status))
        {
            const int signal = WTERMSIG(*m_status);
            const std::string reason = signal == SIGALRM
                                           ? "takes longer than " + std::to_string(arguments.timeout) + " seconds"
                                           : "the importer crashed on it (" + std::string(strsignal(signal)) + ")";
            std::fprintf(stderr, "tw2: %s: %s\n", m_job.front().c_str(), reason.c_str());
        }
        return *m_status != 0;
    }

    void removeUnfinished(const Arguments& arguments) const
    {
        std::error_code ignored;
        std::filesystem::remove_all(TW2::convert::OutputFiles::getUnfinishedName(arguments.folder, m_iProcess),
                                    ignored);
    }

private:
    static void copy(std::FILE* from, std::FILE* to)
    {
        std::rewind(from);
        char buffer[4096];
        for (std::size_t size = std::fread(buffer, 1, sizeof(buffer), from); size > 0;
             size = std::fread(buffer, 1, sizeof(buffer), from))
        {
            std::fwrite(buffer, 1, size, to);
        }
    }

    Job m_job;
    std::FILE* m_pOutput;
    std::FILE* m_pMessages;
    pid_t m_iProcess = -1;
    std::optional<int> m_status;  // of the process, once it has ended
};

volatile std::sig_atomic_t s_iInterrupted = 0;

extern "C" void noteInterruption(int number)
{
    s_iInterrupted = number;
}

/// Being interrupted ends the processes at work, removes what they have not finished, and then ends this one as usual.
void giveUp(const std::vector<std::unique_ptr<Worker>>& workers, const Arguments& arguments)
{
    for (const auto& worker : workers)
    {
        if (!worker->isFinished())
        {
            kill(worker->getProcess(), SIGKILL);
            waitpid(worker->getProcess(), nullptr, 0);
            worker->removeUnfinished(arguments);
        }
    }
    std::signal(s_iInterrupted, SIG_DFL);
    std::raise(s_iInterrupted);
}

/// Converts as many at once as there are jobs allowed; prints in the order of the jobs. Returns whether any failed.
bool convertAll(const std::vector<Job>& jobs, const Arguments& arguments)
{
    struct sigaction action = {};
    action.sa_handler = noteInterruption;  // without SA_RESTART: waiting ends
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    const std::size_t most = arguments.jobs;
    std::vector<std::unique_ptr<Worker>> workers;
    std::size_t reported = 0;
    std::size_t running = 0;
    bool failed = false;
    while (reported < jobs.size())
    {
        while (workers.size() < jobs.size() && running < most && s_iInterrupted == 0)
        {
            workers.push_back(std::make_unique<Worker>(arguments, jobs[workers.size()]));
            ++running;
        }
        int status = 0;
        const pid_t ended = s_iInterrupted == 0 ? waitpid(-1, &status, 0) : -1;
        if (s_iInterrupted != 0)
        {
            giveUp(workers, arguments);
        }
        for (const auto& worker : workers)
        {
            if (worker->getProcess() == ended && !worker->isFinished())
            {
                worker->finish(status, arguments);
                --running;
            }
        }
        for (; reported < workers.size() && workers[reported]->isFinished(); ++reported)
        {
            failed |= workers[reported]->report(arguments);
        }
    }
    return failed;
}

/// Two models that would be written under one name would overwrite each other.
void checkNames(const Arguments& arguments)
{
    std::set<std::string> names;
    for (const std::string& model : arguments.models)
    {
        std::string name = std::filesystem::path(model).stem().string();
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (!names.insert(name).second)
        {
            throw tools::Failure("two of the models are called \"" + name +
                                 "\": convert them into folders of their own, or --together into one object");
        }
    }
}

void run(Arguments arguments)
{
    const bool onto = !arguments.script.empty();
    if (onto != arguments.folder.empty())
    {
        throw CLI::ValidationError("convert",
                                   onto ? "-o FOLDER and --onto SCRIPT exclude each other: the clips go beside SCRIPT"
                                        : "either -o FOLDER or --onto SCRIPT has to be given");
    }
    if (!onto && std::filesystem::exists(arguments.folder) && !std::filesystem::is_directory(arguments.folder))
    {
        throw tools::Failure("-o \"" + arguments.folder +
                             "\" is a file; expected a folder, which is made when it is missing");
    }
    if (onto)
    {
        const std::filesystem::path folder = std::filesystem::path(arguments.script).parent_path();
        arguments.folder = folder.empty() ? "." : folder.string();
    }
    const bool single = arguments.together || onto || arguments.models.size() == 1;
    if (!single && (!arguments.options.m_strName.empty() || !arguments.depfile.empty()))
    {
        throw tools::Failure("--name and --depfile are for one object; of several models use --together to make one");
    }
    if (!single)
    {
        checkNames(arguments);
    }
    if (!arguments.tolerance.empty())
    {
        arguments.options.m_tolerance = {arguments.tolerance[0], arguments.tolerance[1]};
    }
    arguments.options.m_import.m_eUp = arguments.up == "x"   ? ImportOptions::UpAxis::X
                                       : arguments.up == "y" ? ImportOptions::UpAxis::Y
                                       : arguments.up == "z" ? ImportOptions::UpAxis::Z
                                                             : ImportOptions::UpAxis::Automatic;
    arguments.options.m_eLoop = arguments.loop == "always"  ? Options::Loop::Always
                                : arguments.loop == "never" ? Options::Loop::Never
                                                            : Options::Loop::Automatic;
    if (arguments.progress >= 0)
    {
        arguments.options.m_onProgress = [descriptor = arguments.progress](const std::string& step, double part)
        { dprintf(descriptor, "%.3f %s\n", part, step.c_str()); };
    }
    arguments.jobs = arguments.jobs > 0 ? arguments.jobs : std::max(std::thread::hardware_concurrency(), 1U);
    std::vector<Job> jobs;
    if (single)
    {
        jobs.push_back(arguments.models);
    }
    else
    {
        std::ranges::transform(arguments.models, std::back_inserter(jobs),
                               [](const std::string& model) { return Job{model}; });
    }
    arguments.options.m_uiThreads = std::max(arguments.jobs / static_cast<unsigned int>(jobs.size()), 1U);
    if (convertAll(jobs, arguments))
    {
        std::exit(EXIT_FAILURE);  // the reasons are on standard error already
    }
}

const tools::Command s_command(
    "convert", "Turn a modelling tool's file into files that the library loads",
    [](CLI::App& command)
    {
        const auto arguments = std::make_shared<Arguments>();
        command
            .add_option(
                "MODEL", arguments->models,
                "glTF, FBX, COLLADA, X, BVH, ...; several are converted side by side, each to an object of its own")
            ->required();
        command.add_option("-o,--output", arguments->folder, "Folder to write to; made when missing");
        command
            .add_option("--onto", arguments->script,
                        "Instead of writing an object: give the models' clips to the character of this script")
            ->type_name("SCRIPT");
        command
            .add_option("--map", arguments->options.m_strMapFile,
                        "File that tells which node of a model is which of the character, a line \"FROM TO\" for each")
            ->type_name("FILE");
        command.add_option("--block", arguments->options.m_strBlock, "With --onto: the block that gets the clips")
            ->type_name("NAME");
        command
            .add_option("--tolerance", arguments->tolerance,
                        "Allowed error of the played pose: scene units and degrees (default: a two-thousandth of the "
                        "model's size, 0.1)")
            ->expected(2)
            ->allow_extra_args(false)
            ->check(tools::aboveZero())
            ->type_name("UNITS DEGREES");
        command.add_option("--rate", arguments->options.m_iFrameRate, "Frames per second (default: chosen per clip)")
            ->check(CLI::Range(1, 960));
        command.add_option("--up", arguments->up, "Axis of the file that points up (default: auto)")
            ->check(CLI::IsMember({"auto", "x", "y", "z"}));
        command.add_option("--scale", arguments->options.m_import.m_dScale, "Scene units per unit of the file")
            ->check(tools::aboveZero());
        command
            .add_option("--loop", arguments->loop,
                        "Which clips repeat (default: auto, those whose end leads to their beginning)")
            ->check(CLI::IsMember({"auto", "always", "never"}));
        command.add_option("--name", arguments->options.m_strName, "Name of the files (default: the model's)");
        command
            .add_option("--textures", arguments->options.m_import.m_vecTextureFolders,
                        "Folder that is searched for pictures too; may be given several times")
            ->check(CLI::ExistingDirectory)
            ->type_name("DIR")
            ->allow_extra_args(false);
        command.add_option("--timeout", arguments->timeout, "Seconds after which to give up (default: 600; 0: never)");
        command.add_flag(
            "--together", arguments->together,
            "The models are one object: the first that shows anything gives the body, all give their clips");
        command
            .add_option("--clip", arguments->options.m_vecClips,
                        "Take this clip, as NAME, NAME=NEW or with :FROM-TO (frames) behind it; may be repeated")
            ->allow_extra_args(false);
        command.add_flag("--merge-clips", arguments->options.m_bMergeClips, "Make one clip of all that are taken");
        command
            .add_option(
                "--root-motion", arguments->options.m_strTravel,
                "Take the motion of this node out of the clips, as the travel of the whole: NODE (along x and z "
                "and the turn) or NODE:PARTS, such as NODE:xyz,yaw")
            ->type_name("NODE[:PARTS]");
        command.add_flag("--json", arguments->json, "Print the summary as JSON, a document per object");
        command.add_flag("--quiet", arguments->quiet, "Print warnings and errors only");
        command
            .add_option("--progress", arguments->progress,
                        "File descriptor to write a line to for each step: which part is done, and what begins")
            ->check(CLI::Range(0, 1 << 20));
        command.add_option("--depfile", arguments->depfile, "Write what was read as a rule for make and ninja");
        command
            .add_option("-j,--jobs", arguments->jobs,
                        "Processors to use, for several models at once and for the clips of each (default: all)")
            ->check(CLI::Range(1, 256));
        command.callback([arguments] { run(*arguments); });
    });
}  // namespace
