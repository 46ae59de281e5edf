// This file is the frozen API of vendor.quarn.hardware.drel. Do not edit it by hand:
// change the interface under aidl/vendor/ and update the dump with the build's
// update-api and freeze-api targets.
package vendor.quarn.hardware.drel;

import vendor.quarn.hardware.drel.DrelRequestData;
import vendor.quarn.hardware.drel.DrelRequestParcel;
import vendor.quarn.hardware.drel.IDrelCallback;

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
    void reserved11();
    int setRelatedSysInfo(int type, long info);
    int ruleCtl(int ruleId, int status, in DrelRequestData[] data);
}
