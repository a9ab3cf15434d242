// Loads the library at run time, more than once, twice at once, and across fork(). Not linked with
// it: what the library does when it is loaded and unloaded happens here.
//
//   loading_program reload LIBRARY           load, use, unload and load again, shut down
//   loading_program plugins PLUGIN PLUGIN    two libraries that use it in one process
//   loading_program copy LIBRARY COPY        a second copy of it ends the process
//   loading_program fork LIBRARY             parent and child go on using it, with threads around
#include <dlfcn.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

namespace {

using ::google::protobuf::DescriptorPool;
using ::google::protobuf::Message;
using ::google::protobuf::MessageFactory;

void Require(bool holds, const std::string& what) {
  if (holds) return;
  std::cerr << "loading_program: " << what << std::endl;
  std::exit(1);
}

void* Load(const char* path) {
  void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  Require(library != nullptr, library == nullptr ? dlerror() : "");
  return library;
}

template <class Function>
Function* Find(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  Require(symbol != nullptr, std::string(name) + " is not in the library");
  return reinterpret_cast<Function*>(symbol);
}

const Message* Prototype() {
  const auto* descriptor =
      DescriptorPool::generated_pool()->FindMessageTypeByName("zarvo.calibration.CalibrationImage");
  Require(descriptor != nullptr, "the schema is not registered");
  const Message* prototype = MessageFactory::generated_factory()->GetPrototype(descriptor);
  Require(prototype != nullptr, "the class is not registered");
  return prototype;
}

// Reads, prints and writes a record.
void Use(const Message* prototype) {
  const std::string bytes = "\x08\x05\x22\x03rgb";
  const std::unique_ptr<Message> record(prototype->New());
  Require(record->ParseFromString(bytes), "a record is refused");
  Require(record->ShortDebugString() == "width: 5 format: \"rgb\"", "a record reads wrong");
  Require(record->SerializeAsString() == bytes, "a record is written wrong");
}

// The same of the library's class, found by its name.
void Use() { Use(Prototype()); }

void Reload(const char* path) {
  void* library = Load(path);
  Use();
  dlclose(library);
  Use();  // the registered classes stay
  library = Load(path);
  Use();
  dlclose(library);
}

void Plugins(const char* first_path, const char* second_path) {
  void* const first = Load(first_path);
  void* const second = Load(second_path);
  const auto find = [](void* library) { return Find<const void*()>(library, "DefaultInstance")(); };
  Require(find(first) == find(second), "each of two libraries has classes of its own");
  // The type is not known here; every record is a Message first of all.
  std::unique_ptr<Message> record(Find<Message*(const char*)>(first, "MakeRecord")("left"));
  Find<void(Message*, const char*)>(second, "AddCamera")(record.get(), "right");
  Require(record->ShortDebugString() == "camera { name: \"left\" } camera { name: \"right\" }",
          "a record made in one library is not understood in the other");
  dlclose(first);
  Require(dlopen(first_path, RTLD_NOW | RTLD_NOLOAD) == nullptr,
          "a library that uses the records cannot be unloaded");
  Find<void(Message*, const char*)>(second, "AddCamera")(record.get(), "back");
  record.reset();
  dlclose(second);
}

// How a child ends that runs `work`.
template <class Work>
int StatusOf(Work work) {
  const pid_t child = fork();
  Require(child >= 0, "no child process");
  if (child == 0) {
    work();
    _exit(0);
  }
  int status;
  Require(waitpid(child, &status, 0) == child, "the child is lost");
  return status;
}

void Copy(const char* path, const char* copy) {
  Load(path);
  Use();
  const int status = StatusOf([&] {
    alarm(60);
    Load(copy);
    std::cerr << "both copies are loaded\n";
  });
  Require(status != 0, "a second copy of the library was taken");
  Use();
}

void Fork(const char* path) {
  Load(path);
  // The child may be the first to come to reflection.
  Require(StatusOf([] { Use(); }) == 0, "a child cannot use the library");
  Use();
  // Other threads may be at work when the process forks; not in the run-time's tables, whose locks
  // would stay locked in the child.
  const Message* const prototype = Prototype();
  std::atomic<bool> done(false);
  std::array<std::thread, 3> threads;
  for (std::thread& thread : threads) {
    thread = std::thread([&] {
      while (!done) Use(prototype);
    });
  }
  int status = 0;
  for (int i = 0; i < 100 && status == 0; ++i) {
    status = StatusOf([prototype] {
      alarm(60);  // a lock that another thread held would never be released here
      Use(prototype);
    });
  }
  done = true;
  for (std::thread& thread : threads) thread.join();
  Require(status == 0, "a child of a process with threads cannot use the library");
}

}  // namespace

int main(int argc, char** argv) {
  const std::string use = argc > 2 ? argv[1] : "";
  if (use == "reload" && argc == 3) {
    Reload(argv[2]);
  } else if (use == "plugins" && argc == 4) {
    Plugins(argv[2], argv[3]);
  } else if (use == "copy" && argc == 4) {
    Copy(argv[2], argv[3]);
  } else if (use == "fork" && argc == 3) {
    Fork(argv[2]);
  } else {
    std::cerr << "usage: loading_program reload|plugins|copy|fork FILE...\n";
    return 2;
  }
  ::google::protobuf::ShutdownProtobufLibrary();
}
