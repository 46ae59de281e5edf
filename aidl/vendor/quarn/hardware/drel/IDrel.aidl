package vendor.quarn.hardware.drel;

import vendor.quarn.hardware.drel.DrelRequestData;
import vendor.quarn.hardware.drel.DrelRequestParcel;
import vendor.quarn.hardware.drel.IDrelCallback;

/**
 * The device's resource-control service: CPU, GPU and DDR boosts and limits, scheduler grouping,
 * thermal state and rules. Registered as "vendor.quarn.hardware.drel.IDrel/default".
 */
@VintfStability
interface IDrel {
    void init();
    int request(in DrelRequestParcel parcel);
    int release(int handle);
    DrelRequestData[] stateRequest(in DrelRequestParcel parcel);
    int listeningRegister(in DrelRequestParcel parcel, in IDrelCallback callback);
    int listeningUnregister(int handle);
    String propertyGet(String name);
    int propertySet(String name, String value);
    int thermalListeningRegister(in int[] ids, in IDrelCallback callback);
    int thermalListeningUnregister(int handle);
    /** Keeps the transaction codes of the operations after it; never called. */
    void reserved11();
    int setRelatedSysInfo(int type, long info);
    int ruleCtl(int ruleId, int status, in DrelRequestData[] data);
}
