// Asks the platform's task scheduler for one task by name: prints its definition and exits with 0
// when it is registered, exits with 1 when it is not. Used by the package scenarios.
#include <windows.h>

#include <taskschd.h>
#include <wrl/client.h>

#include <cstdio>

int wmain(int argc, wchar_t** argv) {
    if (argc != 2)
        return 2;
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    int status = 1;
    {
        Microsoft::WRL::ComPtr<ITaskService> service;
        Microsoft::WRL::ComPtr<ITaskFolder> root;
        Microsoft::WRL::ComPtr<IRegisteredTask> task;
        const VARIANT none{};
        BSTR rootName = SysAllocString(L"\\"), taskName = SysAllocString(argv[1]), xml = nullptr;
        if (SUCCEEDED(CoCreateInstance(CLSID_TaskScheduler, nullptr, CLSCTX_INPROC_SERVER,
                                       IID_PPV_ARGS(&service))) &&
            SUCCEEDED(service->Connect(none, none, none, none)) &&
            SUCCEEDED(service->GetFolder(rootName, &root)) &&
            SUCCEEDED(root->GetTask(taskName, &task))) {
            status = 0;
            if (SUCCEEDED(task->get_Xml(&xml)) && xml != nullptr)
                wprintf(L"%ls\n", xml);
        }
        SysFreeString(xml);
        SysFreeString(taskName);
        SysFreeString(rootName);
    }
    CoUninitialize();
    return status;
}
