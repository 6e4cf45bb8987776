// Asks the platform's task scheduler for one task by name: prints its definition and exits with 0
// when it is registered, exits with 1 when it is not. Used by the package scenarios.
#include <windows.h>

#include <taskschd.h>

#include <cstdio>

int wmain(int argc, wchar_t** argv) {
    if (argc != 2)
        return 2;
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    int status = 1;
    ITaskService* service = nullptr;
    if (SUCCEEDED(CoCreateInstance(CLSID_TaskScheduler, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_ITaskService, reinterpret_cast<void**>(&service)))) {
        VARIANT empty{};
        ITaskFolder* root = nullptr;
        IRegisteredTask* task = nullptr;
        BSTR rootName = SysAllocString(L"\\");
        BSTR taskName = SysAllocString(argv[1]);
        if (SUCCEEDED(service->Connect(empty, empty, empty, empty)) &&
            SUCCEEDED(service->GetFolder(rootName, &root)) &&
            SUCCEEDED(root->GetTask(taskName, &task))) {
            BSTR xml = nullptr;
            if (SUCCEEDED(task->get_Xml(&xml)) && xml != nullptr)
                wprintf(L"%ls\n", xml);
            SysFreeString(xml);
            task->Release();
            status = 0;
        }
        SysFreeString(taskName);
        SysFreeString(rootName);
        if (root != nullptr)
            root->Release();
        service->Release();
    }
    CoUninitialize();
    return status;
}
